// The macro language on and off: what it puts in the place of the plain readers, and what it does
// when inputs begin and end or a command fails.
#pragma once

namespace zeb {

/// Starts and stops the language: memory, readers, hooks of the input. `stop` refuses inside a
/// loop.
void start_macros();
void stop_macros();

/// Leaves all loops and other bodies that are open; each file is read on after them. True: the
/// current one was in such a body.
bool leave_all_bodies();

/// Ends the command with its name and "legal only when macros are enabled" while the language is
/// off.
void require_macros();

}  // namespace zeb
