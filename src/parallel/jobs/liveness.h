// Which tasks are there, and what they say unasked.
#pragma once

#include <vector>

#include "parallel/jobs/job_table.h"

namespace zeb {

/// Seconds after which a task that should have said something counts as dead, or as one that
/// doesn't answer.
double longest_silence();

/// Takes in hellos and status messages that have come.
void take_status_messages(job_record& job);
/// Is the task still there? What isn't is noted.
bool is_alive(task_record& which);
/// Over MPI, where nothing else tells of the processes: waits until all tasks have said hello.
void await_hellos(std::vector<task_record>& tasks);
/// Ends its process, whatever it does.
void kill_task(task_record& which);
/// For transports: may a message wait any longer for that task, or for the parent, to take it?
bool may_wait_for(task_id task, double seconds);

}  // namespace zeb
