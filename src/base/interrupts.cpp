#include "base/interrupts.h"

#include "base/hooks.h"

namespace zeb {

interrupt_state interrupts;

void stop_search(stop_reason reason) { interrupts.reason = reason; }
void forget_interrupt() { interrupts.reason = stop_reason::none; }

void check_interrupt() {
  if (!interrupted() && hooks_of_base.check_interrupt) hooks_of_base.check_interrupt(false);
}

void wait_for_go_ahead() {
  if (!interrupted() && hooks_of_base.check_interrupt) hooks_of_base.check_interrupt(true);
}

}  // namespace zeb
