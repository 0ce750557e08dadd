// How often the matrix has changed in a way that makes what was computed of it wrong.
#pragma once

namespace zeb {

/// Weights and activity of characters and taxa aren't counted: who keeps results compares them.
struct matrix_change_state {
  unsigned count = 0;
};
extern matrix_change_state matrix_changes;  // written by `drop_packed_data` only

}  // namespace zeb
