// Shared objects that hold what needs a library, opened when it is needed.
#pragma once

#include <memory>
#include <string>

#include "parallel/transport/transport.h"

namespace zeb {

/// The transport of the module of that name, beside the program or where it was installed. Null:
/// `fault` says why. Modules stay loaded.
std::unique_ptr<transport> transport_of_module(const std::string& name, std::string* fault);

}  // namespace zeb
