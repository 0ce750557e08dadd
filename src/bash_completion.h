// The completion script for bash, made of the tables of commands and options.
#pragma once

#include <string>

namespace zeb {

/// A script that teaches bash to complete the arguments of `zeb`: command words where a command
/// begins, its options after it, names of files everywhere.
std::string bash_completion();

}  // namespace zeb
