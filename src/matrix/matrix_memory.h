// The memory that a data set needs, and the arena made large enough for it.
#pragma once

namespace zeb {

/// Bytes that a data set of this size is expected to need, searches included; infinite rather than
/// wrapped round.
double matrix_memory_estimate(int ntax, int nchar);
/// Makes the arena larger where a matrix of this size needs it; with `tell` prints what that will
/// be. The former data must have gone.
void make_room_for_matrix(int ntax, int nchar, bool tell = true);

}  // namespace zeb
