#include <unistd.h>

#include "base/interrupts.h"
#include "base/process.h"
#include "console/console.h"
#include "console/output.h"
#include "console/screen.h"
#include "console/settings.h"
#include "language/commands/commands.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/toggles.h"

namespace zeb {
namespace {

constexpr useconds_t tenth_of_a_second = 100'000;

void sleep_seconds(double seconds) {
  const double end = wall_clock() + seconds;
  while (wall_clock() < end) {
    usleep(tenth_of_a_second);
    check_interrupt();
  }
}

void wait_for_user() {
  if (!user_present()) {
    report_line("No terminal to wait for a key: not pausing");
    return;
  }
  wait_for_key();
  if (settings.break_polling) check_interrupt();
}

}  // namespace

void pause_command() {
  no_timing();
  const int c = skip_blanks_peek();
  if (c == '=' || c == '-' || c == '/') return toggle_command(screen.paging, "Paged output");
  double seconds = 0;
  const bool timed = read_optional_float(&seconds);
  expect_end();
  if (timed) return sleep_seconds(seconds);
  wait_for_user();
}

}  // namespace zeb
