// Keywords of `pzeb` that steer jobs by signals. Each reads its own arguments, up to and over ";".
#pragma once

#include "language/hooks.h"

namespace zeb {

/// What the files that steer a background run ask for happens to all jobs.
void steer_jobs(steering_wish wish);

/// Ends the tasks of all jobs, and forgets these.
void kill_all_jobs();
/// Ends the tasks of all jobs, and forgets these.
void kill_all_jobs();

void stop_keyword();
void kill_keyword();
void pause_keyword();
void resume_keyword();
void skipto_keyword();
void goto_keyword();

}  // namespace zeb
