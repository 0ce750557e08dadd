// What the flow commands share: capturing loop texts, skipping blocks, and telling where a script
// stands.
#pragma once

#include <string>

#include "macro/macro_state.h"

namespace zeb {

/// Reads up to the matching `stop` into the heap. Errors: too deep nesting, end of the input, heap
/// full.
void capture_loop_text(loop_record& loop);

/// Skips, without expansion, to the `else` or `end` that matches an `if`, or to an `xend`.
void skip_block();

/// Shows where the script stood when an error ended it: the line of the loop or of the file, the
/// text there and a caret.
void show_script_place();

/// "At line 3 of loop 1 (value: 7)", or empty outside loops.
std::string loop_place();

}  // namespace zeb
