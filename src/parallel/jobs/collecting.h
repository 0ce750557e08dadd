// Results of jobs, and trees and texts of tasks that go on.
#pragma once

#include <vector>

namespace zeb {

enum class collecting { one_by_one, in_one_pass };

/// Waits for the tasks of these jobs and takes what they return; the jobs are over then. With
/// `stop_first` they are told to stop. Only the trees of a job that is collected alone may need
/// more room than there is. Trees held before become the group "PreviousTrees".
void collect_jobs(const std::vector<int>& slots, bool stop_first, collecting how);

/// Reads "0 2-3" as tasks of a job.
std::vector<int> read_task_list(int slot);

/// Keywords of `pzeb`; each reads its own arguments, up to and over ";".
void get_keyword();
void spy_keyword();
void getbufs_keyword();

}  // namespace zeb
