// Trees that nobody has saved when the program ends before its commands do.
#pragma once

namespace zeb {

/// All trees in memory, as they are now, stand in a file.
void note_trees_saved();
/// Where a signal, or want of memory, ends the program: trees in memory that aren't in a file go to
/// the open tree file, or to a new file that a message names. Automatic saving has had its turn.
void rescue_trees();

}  // namespace zeb
