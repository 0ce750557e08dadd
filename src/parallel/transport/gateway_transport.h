// Tasks over MPI, which a gateway spawns.
#pragma once

#include <memory>

#include "parallel/transport/transport.h"

namespace zeb {

/// `above` is how a task reaches its parent and its siblings; null where it is no task.
std::unique_ptr<transport> make_gateway_transport(std::unique_ptr<transport> above);

}  // namespace zeb
