// The levels of loops: their share of the heap, the next round, and leaving them.
#pragma once

namespace zeb {

/// Error where a loop at `level` would be nested too deep.
void check_loop_depth(int level);

/// Adds the step to the innermost loop's counter and goes back to the start of its text, or leaves
/// the loop.
void advance_loop();
/// Ends all loops above `level`, from the innermost outward; the reader's position is left alone.
/// Names given to variables within a loop move down into the place of its text, which goes.
void leave_loops_above(int level);

}  // namespace zeb
