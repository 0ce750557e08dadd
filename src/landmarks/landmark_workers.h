// The threads of searches and scores with landmarks: begun when there is work for them, ended with
// the command, or kept on the user's wish.
#pragma once

#include <functional>

namespace zeb {

/// Calls `task(part)` for each of the parts, on all threads; see `worker_threads`.
void share_out(int parts, const std::function<void(int part)>& task);
/// The command is over.
void rest_workers();
/// The process is about to be copied, and threads can't be: ends them. The copies use one thread
/// each; what is told once about the number is told now.
void end_threads_for_copies();

}  // namespace zeb
