// The variables by which Open MPI is steered, and by which it tells the processes that it starts
// what they are.
#pragma once

#include <string>

namespace zeb {

/// Within which tasks that were started are to join the others.
int seconds_to_join();
/// Before the library starts. A task has been told by its spawner; a process that is to spawn goes
/// by what the user set, and by what suits jobs where he set nothing. `host_file`: that in use;
/// empty: none is.
void prepare_mpi_environment(bool as_task, const std::string& host_file);

}  // namespace zeb
