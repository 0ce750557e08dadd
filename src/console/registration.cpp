#include "console/registration.h"

#include "base/command.h"
#include "base/hooks.h"
#include "console/console.h"
#include "console/hooks.h"
#include "console/log.h"
#include "console/progress.h"
#include "console/text_buffer.h"

namespace zeb {

console_hooks hooks_of_console;

namespace {

void close_outputs() {
  end_console();
  close_log();
}

}  // namespace

void register_console() {
  display_buffer.allot(usual_kilobytes);
  add_command_over_hook(clear_command_progress);
  hooks_of_base.close_outputs = close_outputs;
}

}  // namespace zeb
