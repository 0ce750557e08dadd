// The assignment that runs (`set`), and the lists that functions of its expression write into its
// target.
#pragma once

#include <span>
#include <string>

#include "macro/variable_reference.h"

namespace zeb {

struct assignment_state {
  int target = -1;  // cell that a list function writes from on; -1 while no assignment runs
  int room = 0;     // cells it may fill
  bool is_array = false;
  std::span<const int> sizes;  // dimensions of that array; empty for a cell
  bool is_array_cell = false;  // a cell of an array, under protection: its row is filled from there
  bool is_scalar = false;      // a cell with a name, under protection: no place for a list
  bool list_written = false;   // a list function has filled the target
  int list_size = 0;           // last index written by a list function; stays until the next one
};
extern assignment_state assignment;

/// Opens the target for its lifetime: the cells of the array or row that the reference leads to,
/// the rest of the row from a cell of an array on, or all that follow an unnamed number.
class running_assignment {
 public:
  explicit running_assignment(const variable_reference& target);
  ~running_assignment() { assignment.target = -1; }
  running_assignment(const running_assignment&) = delete;
  running_assignment& operator=(const running_assignment&) = delete;
};

/// Writes the values from the target on, and sets the size of the list. `name` is how
/// the function calls itself in messages. Returns the first value.
double write_list(const char* name, std::span<const double> values);
/// The same for rows of `columns` values each, which need a two-dimensional array.
double write_rows(const char* name, std::span<const double> values, int columns);
/// Writes a string into the target, which has room for it.
void write_string(const std::string& text);
/// Sets the size of the list for values that were stored elsewhere.
void set_list_size(int last_index);

}  // namespace zeb
