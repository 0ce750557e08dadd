// The table of what tasks do, and how the last `wait` ended.
#pragma once

#include <vector>

namespace zeb {

/// A line for each task and one for each job, of what the tasks told last.
void show_status_table(const std::vector<int>& slots);
/// False where it ended on its time-out or by a key.
bool last_wait_succeeded();
/// Tasks don't send their status when nobody looks any more.
void stop_monitoring_after_error();

/// Keywords of `pzeb`; each reads its own arguments, up to and over ";".
void wait_keyword();
void gwait_keyword();

}  // namespace zeb
