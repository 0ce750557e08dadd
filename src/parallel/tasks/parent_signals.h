// What a parent asks of a task while that works.
#pragma once

namespace zeb {

/// Looks at most every communication time, sends the status where the parent wants it, and obeys.
/// True: the running command is to stop. Ends the process where the parent is gone.
bool stop_asked_by_parent();
/// The same at once.
bool obey_parent();
/// A `set` that the parent sent runs where nothing else does.
void run_sets_of_parent();
/// Does the parent's process run, where it is on this machine?
bool is_parent_there();
/// Ends the process where nobody waits for it any more.
void test_parent();

}  // namespace zeb
