// What a parent asks of a task while that works.
#pragma once

namespace zeb {

/// Looks at most every communication time, sends the status where the parent wants it, and obeys.
/// True: the running command is to stop. Ends the process where the parent is gone.
bool stop_asked_by_parent();
/// The same at once.
bool obey_parent();
/// Runs the texts of `set` that the parent sent, between commands and while a search runs: else
/// something is being read.
void run_sets_of_parent(bool between_commands);
/// Does the parent's process run, where it is on this machine?
bool is_parent_there();
/// Ends the process where nobody waits for it any more.
void test_parent();

}  // namespace zeb
