// Texts that are passed over as a whole: a body, which is kept, and a branch that isn't taken.
#pragma once

#include <string>

#include "macro/body_record.h"

namespace zeb {

/// Reads the body of a command up to its closing word, into the heap. The record is ready to be
/// entered but for what it is run for. `name` is a loop's. Errors: too deep nesting, end of the
/// input, heap full.
body_record capture_body(body_kind kind, const std::string& name = {});

/// Where a branch that isn't taken begins.
enum class branch { after_if, after_else };
/// Skips, without expansion, to the `else` or `end` that matches an `if`, or to an `xend`.
void skip_branch(branch from);

}  // namespace zeb
