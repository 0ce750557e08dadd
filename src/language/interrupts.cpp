// The user's stop: keys at the console, files in the background.
#include "base/errors.h"
#include "base/process.h"
#include "console/console.h"
#include "console/output.h"
#include "language/input.h"
#include "language/steering.h"

namespace zeb {
namespace {

void obey(key_wish wish) {
  if (wish == key_wish::interrupt) user_interrupt();
  if (wish == key_wish::end_search) process.interrupt_state = 1;
}

}  // namespace

void user_interrupt() {
  reset_output();
  clear_progress();
  if (!process.in_search) emit("\nUser interrupt...\n");
  pop_all();
  if (process.in_search) {
    process.interrupt_state = 1;
    return;
  }
  if (take_up_execute_file()) unwind_interrupted_command();
  unwind_command();
}

void check_interrupt(int mode) {
  if (process.interrupt_state != 0) return;
  if (mode == 2) return user_interrupt();
  if (process.background) {
    if (stop_asked_by_file(mode == 100)) user_interrupt();
    return;
  }
  if (mode == 1) obey(poll_interrupt_keys());
  if (mode == 0) obey(wait_interrupt_key());
}

}  // namespace zeb
