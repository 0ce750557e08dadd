// Signals that ask the program to stop. A handler only notes that one came; who looks at the
// keyboard reads the note, and acts on it there.
#pragma once

namespace zeb {

/// Has SIGINT, SIGTERM and SIGHUP noted from now on, but for those that the caller of the program
/// had ignored. What a parent process noted isn't this one's.
void note_signals();
/// The signal that came and wasn't answered yet, 0 for none. Those that end the program stand
/// before an interrupt.
int noted_signal();
/// It is answered.
void forget_signal();
/// Forgets a Ctrl-C; false where something else or nothing was noted.
bool take_interrupt_signal();
/// "SIGTERM".
const char* signal_name(int signal);

}  // namespace zeb
