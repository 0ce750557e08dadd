#include "macro/registration.h"

#include "base/process.h"
#include "macro/macro_state.h"

namespace zeb {

void register_macro() { macros.clock_start = wall_clock(); }

}  // namespace zeb
