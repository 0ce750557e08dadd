// Texts that are passed over as a whole: the body of a loop, which is kept, and a branch that isn't
// taken.
#pragma once

#include "macro/macro_state.h"

namespace zeb {

/// Reads up to the matching `stop` into the heap. Errors: too deep nesting, end of the input, heap
/// full.
void capture_loop_text(loop_record& loop);

/// Skips, without expansion, to the `else` or `end` that matches an `if`, or to an `xend`.
void skip_branch();

}  // namespace zeb
