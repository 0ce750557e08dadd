// What a task tells its parent.
#pragma once

#include "parallel/messages/contents.h"
#include "search/search_context.h"

namespace zeb {

/// A search of this process is over: its counters are added to those of the task.
void count_search(const search_context& search);
/// How far this task is.
task_status status_of_task();
/// The result, as `return` wants it.
task_result result_of_task();

}  // namespace zeb
