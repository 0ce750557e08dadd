// Tasks on this machine, without any library: copies of the program at the ends of socket pairs.
#pragma once

#include <memory>

#include "parallel/transport/transport.h"

namespace zeb {

/// The first argument of its tasks; the descriptors of their sockets come after it.
constexpr const char* local_task_argument = "local_slaveproc";

/// For a task, `descriptors` are those of its own arguments: the socket to its parent, and, where
/// it has siblings, those to them.
std::unique_ptr<transport> make_local_transport(const std::string& descriptors = {});

}  // namespace zeb
