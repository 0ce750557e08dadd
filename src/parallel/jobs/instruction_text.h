// The instructions for tasks, as they stand in the script of their parent.
#pragma once

#include <string>

namespace zeb {

/// Reads the commands up to the `return` that ends them, with its options and ";". Variables in
/// single quotes are expanded; all else goes to the tasks as it is. "..." alone stands for the
/// instructions of this process, where it is a task, or with `may_repeat` for those that the tasks
/// had before (empty). Errors: too long for the memory of macros, no `return`.
std::string read_instructions(bool may_repeat);

}  // namespace zeb
