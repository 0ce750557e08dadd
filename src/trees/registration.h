// What the trees' room plugs in at start-up.
#pragma once

namespace zeb {

/// Called once, from the program's start: buffer, list kinds, hooks.
void register_trees();

/// Its parts, one a file.
void register_tree_store();
void register_tree_lists();
void register_display();
void register_tree_file();
void register_auto_save();

}  // namespace zeb
