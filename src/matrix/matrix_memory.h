// The memory that a data set needs, and the arena made large enough for it.
#pragma once

namespace zeb {

/// Bytes that a data set of this size is expected to need, searches included; infinite rather than
/// wrapped round.
double matrix_memory_estimate(int ntax, int nchar);
/// Prints what a matrix of this size will need, and makes the arena larger where it should be. The
/// former data must have gone.
void make_room_for_matrix(int ntax, int nchar);

}  // namespace zeb
