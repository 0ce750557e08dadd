#include "language/registration.h"

#include "base/hooks.h"
#include "console/hooks.h"
#include "language/completion.h"
#include "language/hooks.h"
#include "language/unwinding.h"

namespace zeb {

language_hooks hooks_of_language;

void register_language() {
  hooks_of_base.tell_error = tell_error;
  hooks_of_base.tell_warning = tell_warning;
  hooks_of_base.check_interrupt = look_for_interrupt;
  hooks_of_console.complete = complete_line;
}

}  // namespace zeb
