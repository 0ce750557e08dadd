// Processes of this machine.
#pragma once

namespace zeb {

/// One that has ended and wasn't waited for by its parent yet doesn't run any more; one that was
/// stopped does.
bool process_runs(int number);

}  // namespace zeb
