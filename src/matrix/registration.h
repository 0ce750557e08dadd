// What the matrix hands down at start-up.
#pragma once

namespace zeb {

/// Hands the rooms below what they need of this one. Called once, at start-up.
void register_matrix();

}  // namespace zeb
