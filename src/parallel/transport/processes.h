// Processes of this machine.
#pragma once

#include <string_view>

namespace zeb {

/// One that has ended and wasn't waited for by its parent yet doesn't run any more; one that was
/// stopped does.
bool process_runs(int number);
/// Is this word among those that it was called with?
bool process_was_called_with(int number, std::string_view word);

}  // namespace zeb
