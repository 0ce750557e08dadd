// While data stand for a part of a tree, it stays fixed which characters have costs: the states of
// that part were found so.
#pragma once

namespace zeb {

void forbid_changes_of_sankoff();
/// Error where they are forbidden.
void require_free_sankoff();

}  // namespace zeb
