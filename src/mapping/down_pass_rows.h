// The internal nodes of a stored tree as rows of a matrix, with their down-pass sets.
#pragma once

#include <vector>

#include "matrix/reading/matrix_writer.h"

namespace zeb {

/// Rows of the nodes of a tree of the buffer, from the root on. Characters without sets of states
/// are missing in them, with a warning.
std::vector<named_row> rows_of_tree(int number);

}  // namespace zeb
