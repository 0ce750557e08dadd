// Where the landmarks of a character move on a tree.
#pragma once

namespace zeb {

/// Prints, by node, the landmarks whose positions differ from those of the ancestor, and how far
/// they are from there.
void list_moved_landmarks(int tree, int character);

}  // namespace zeb
