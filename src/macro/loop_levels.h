// Leaving loops: the levels, their share of the heap, and where the reader goes on.
#pragma once

namespace zeb {

/// Ends the innermost loop; the reader's position is left alone. Names given to variables within
/// the loop move down into the place of its text, which goes.
void leave_loop();
/// Ends all loops above `level`, from the innermost outward.
void leave_loops_above(int level);

/// After an error or interrupt: closes the files of `hifile`, forgets pending expansions, and ends
/// all loops. What was being read
/// within a loop goes on behind it, in the files that are open still. True if the reader now stands
/// behind a loop.
bool reset_macro_flow();

}  // namespace zeb
