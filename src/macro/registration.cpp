#include "macro/registration.h"

#include "base/process.h"
#include "macro/hooks.h"
#include "macro/macro_state.h"

namespace zeb {

struct macro_hooks hooks_of_macro;

void register_macro() { macros.clock_start = wall_clock(); }

}  // namespace zeb
