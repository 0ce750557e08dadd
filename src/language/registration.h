// What the language hands down at start-up.
#pragma once

namespace zeb {

/// Errors, warnings and interrupts are told by the language. Before the first command.
void register_language();

}  // namespace zeb
