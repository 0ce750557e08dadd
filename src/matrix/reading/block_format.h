// What the options of a block, "&[...]", say about how its cells are read.
#pragma once

#include <string>

#include "matrix/matrix.h"

namespace zeb {

/// In force for a block and, but for the name, for those that follow.
struct block_format {
  data_type type = numeric_data;
  int dimensions = 2;        // of landmarks
  bool gaps = false;         // a gap is a state
  bool verbose = false;      // tell the block's size when it is read
  bool trim_head = false;    // DNA and proteins with gaps: leading gaps are missing
  bool trim_tail = false;    // the same for trailing gaps
  bool match_names = false;  // names that aren't found may be similar ones
  std::string name;          // "/name"; of this block only
};

/// Errors where the type needs wider cells than the present ones.
void check_type_fits(data_type type);
/// Reads the options after "[" and the "]" that ends them. `other_types_read`: characters that
/// aren't continuous have been read before.
void read_block_format(block_format& format, bool other_types_read);

}  // namespace zeb
