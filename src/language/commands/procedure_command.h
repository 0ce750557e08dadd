// What `procedure` and a batch run share.
#pragma once

#include <string>

namespace zeb {

/// Goes on reading in the file: commands, or a NEXUS file. Errors: those of `push_file`.
void read_commands_from(const std::string& name);

}  // namespace zeb
