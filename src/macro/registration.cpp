#include "base/process.h"
#include "macro/commands.h"
#include "macro/macro_state.h"

namespace zeb {

void register_macros() { macros.clock_start = wall_clock(); }

}  // namespace zeb
