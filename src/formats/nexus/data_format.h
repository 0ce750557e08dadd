// The "format" command of a NEXUS data block, and the symbols that it makes.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "formats/nexus/nexus_file.h"
#include "matrix/symbols.h"

namespace zeb {

/// Characters first to last are of one type.
struct nexus_type_range {
  data_type type = numeric_data;
  int first = 0;
  int last = 0;
};

struct nexus_format {
  data_type type = numeric_data;
  std::vector<nexus_type_range> mixed;  // "datatype=mixed(...)"; empty otherwise
  int continuous = 0;  // of mixed data: characters from the first one on that are continuous
  char missing = '?';
  char gap = 0;  // 0: none given
  char match = 0;
  bool respect_case = false;
  bool interleaved = false;
  bool labels = true;
  std::string symbols;  // states in their order; empty: the usual ones
  std::vector<std::pair<char, std::string>> equates;

  data_type type_of(int character) const;
};

/// Reads the command up to its ";".
void read_nexus_format(nexus_file& file, nexus_format& format);
/// The cell of each symbol for characters of a type. 0: not a symbol of the data.
symbol_table nexus_symbols(const nexus_format& format, data_type type, bool gaps_are_states);

}  // namespace zeb
