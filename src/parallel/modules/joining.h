// How tasks over MPI are started and come together. Between a spawner and its tasks, nothing else
// may be sent before that is over.
#pragma once

#include <mpi.h>

#include <string>

#include "parallel/transport/transport.h"

namespace zeb {

/// Starts tasks and waits until all have joined. MPI_COMM_NULL: they don't, `fault` says why, and
/// those of this machine are ended. This process can't be relied on to spawn again then.
MPI_Comm spawn_and_join(const spawn_request& request, MPI_Info info, std::string* fault);
/// A task has joined the others.
void tell_joined(MPI_Comm parent);

}  // namespace zeb
