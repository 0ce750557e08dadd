// References to variables: a number, name or expression, with subscripts.
#pragma once

#include <array>
#include <span>

#include "macro/macro_state.h"

namespace zeb {

/// Where a reference leads.
struct variable_reference {
  int base = 0;        // the variable named
  int cell = 0;        // the cell after all subscripts
  int last = 0;        // last cell of a range; equals `cell` without one
  int dimensions = 0;  // of the base under protection; 0 scalar or unknown
  int subscripts = 0;  // how many were given
  std::array<int, most_dimensions> subscript = {};  // the first of them
  bool named = false;
  bool range = false;
  char separator = ' ';  // "&N" after a range
  /// Under protection: the reference stops at an index cell (fewer subscripts than dimensions).
  bool is_section() const { return subscripts < dimensions; }
};

/// Under protection: the dimensions below the subscripts given, empty for a cell; and the first
/// data cell of that section (the cell itself for a cell). Errors where index cells were made to
/// lead out of the store.
std::span<const int> section_sizes(const variable_reference& reference);
int section_start(const variable_reference& reference);

/// Reads a reference. `ranges` allows "a-b" in the last subscript. Numbers have the var shift
/// added, names don't. Errors name the variable and the dimension.
variable_reference read_variable_reference(bool ranges);
/// The same once the number of the base is known: only the subscripts, if "[" comes next.
variable_reference read_subscripts(int base, bool named, bool ranges);
/// Reads the base of a reference: its absolute number.
int read_variable_number(bool* named);

}  // namespace zeb
