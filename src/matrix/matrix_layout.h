// Laying out a matrix in the arena, making it current, and dropping it.
#pragma once

#include <string>

#include "matrix/matrix.h"

namespace zeb {

/// Releases the matrix, trees and all that hangs on them.
void wipe_matrix();
/// Called when a new matrix has been laid out (by the tree store, groups...), and when one goes.
/// Registered at start-up, run in order.
using matrix_hook = void (*)();
void add_new_matrix_hook(matrix_hook hook);
void add_matrix_gone_hook(matrix_hook hook);

/// Lays out an empty matrix in the arena (every cell missing, default settings), dropping any
/// former one. Sizes are checked before anything is allocated. Used by every reader and by tests.
/// A reader that fails before `finish_matrix` leaves no data: the end of the command clears them.
/// Readers take the rows as they lie and blank each when its taxon comes, so that a size that is
/// far too large costs nothing.
enum class matrix_rows { blank, unset };
void begin_matrix(int ntax, int nchar, matrix_rows rows = matrix_rows::blank);
/// Bytes of a cell of the data that are read next. With data in memory their cells keep their width
/// until they go.
void set_cell_width(int cell_bytes);
int next_cell_width();
/// The settings for what is read next, and those of how the data are shown, are put back at its
/// end: for data that are read on the way. Data in memory at that time keep their cells.
class data_settings_scope {
 public:
  data_settings_scope();
  ~data_settings_scope();
  data_settings_scope(const data_settings_scope&) = delete;
  data_settings_scope& operator=(const data_settings_scope&) = delete;

 private:
  matrix_state former_;
  int cell_bytes_;
  int name_limit_;
};
/// Makes every cell of the taxon missing.
void blank_row(int taxon);
/// Fewer taxa or characters than were laid out. Before `finish_matrix` only.
void shrink_matrix(int ntax, int nchar);
/// Makes a laid-out matrix current: types, defaults, outgroup, groups, hooks, lock. The reader has
/// set each character's type, and the block table where there is more than one block.
void finish_matrix();
/// Clears what a reader began and didn't finish. Run at the end of every command.
void drop_unfinished_matrix();

/// What the data are called, with its quotes, and the file (or whatever else) they came from.
void set_matrix_source(std::string title, std::string file_name);
/// Sets the type of a character, and with DNA and proteins whether "-" was read as a state.
void set_character_type(int character, data_type type, bool gap_is_state = false);

}  // namespace zeb
