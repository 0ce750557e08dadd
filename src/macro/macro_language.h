// The macro language on and off: what it puts in the place of the plain readers, and what it does
// when inputs begin and end or a command fails.
#pragma once

namespace zeb {

/// Starts and stops the language: memory, readers, hooks of the input. `stop` refuses inside a
/// loop.
void start_macros();
void stop_macros();

/// Ends the command with its name and "legal only when macros are enabled" while the language is
/// off.
void require_macros();

}  // namespace zeb
