// Reads rows of landmarks: a name, then points "x,y" or "x,y,z" with blanks between them, "?" for
// one that is missing.
#pragma once

#include <string>

#include "matrix/reading/cell_reader.h"

namespace zeb {

/// A block is one configuration, which is one character.
class landmark_reader {
 public:
  /// Reads the points of a row, up to its newline or ";", which stay unread. A row of missing
  /// points alone lacks the configuration, whatever their number; the first other row says how many
  /// points there are. Returns one past the character, or the character for a row of nothing.
  int read_row(const row_place& place, int dimensions);
  /// For a row that stands for several taxa.
  static void copy_row(int from, int to, int character);
  /// A configuration that no taxon has is one of no points.
  static void end_block(int character, int dimensions);

 private:
  std::string first_taxon_;  // of the block: the one that said how many points there are
};

}  // namespace zeb
