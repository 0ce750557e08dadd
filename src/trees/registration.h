// What the trees' room hands down at start-up.
#pragma once

namespace zeb {

/// Called once, from the program's start, when the rooms below have registered.
void register_trees();

}  // namespace zeb
