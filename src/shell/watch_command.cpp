// `watch`: the time and memory of commands, and a stopwatch.
#include "shell/arena.h"
#include "shell/commands.h"
#include "shell/errors.h"
#include "shell/interpreter.h"
#include "shell/lexer.h"
#include "shell/output.h"
#include "shell/process.h"

namespace zeb {
namespace {

void chatter(const char* text) {
  if (settings.report) report_line(text);
}

void measure_ram(bool on) {
  settings.watch_ram = on;
  chatter(on ? "Measuring RAM used for each command" : "Not measuring RAM used for each command");
}

// "On" is 2 until the next round, so that the command isn't timed itself.
void switch_on(bool on) {
  settings.watch = on ? 2 : 0;
  show_toggle(on, "Watch");
}

bool obey(int sign) {
  switch (sign) {
    case '=':
      switch_on(true);
      return true;
    case '-':
      switch_on(false);
      return true;
    case '[':
      measure_ram(true);
      return true;
    case ']':
      measure_ram(false);
      return true;
    case '!':
      arena.peak_ram_ever = 0;
      chatter("Resetting max. RAM counter to 0");
      return true;
    case '/':
      report_line("Ellapsed time:", text_of("%.2f secs.", wall_clock() - process.stopwatch_start));
      return true;
    case '*':
      process.stopwatch_start = wall_clock();
      return true;
    default:
      return false;
  }
}

}  // namespace

void watch_command() {
  no_timing();
  if (accept_char(';')) return show_toggle(settings.watch != 0, "Watch");
  while (!accept_char(';')) {
    const int sign = next_nonblank();
    if (!obey(sign)) error_end("Wrong argument for watch:", static_cast<char>(sign));
  }
}

}  // namespace zeb
