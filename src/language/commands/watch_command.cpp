// `watch`: the time and memory of commands, and a stopwatch.
#include <string>
#include <string_view>

#include "base/arena.h"
#include "base/errors.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/commands/commands.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/toggles.h"

namespace zeb {
namespace {

void chatter(const char* text) {
  if (settings.report) report_line(text);
}

void measure_ram(bool on) {
  watch_ram(on);
  chatter(on ? "Measuring RAM used for each command" : "Not measuring RAM used for each command");
}

void switch_on(bool on) {
  watch_commands(on);
  show_toggle(on, "Watch");
}

constexpr std::string_view known_signs = "=-[]!/*";

void obey(char sign) {
  switch (sign) {
    case '=':
    case '-':
      return switch_on(sign == '=');
    case '[':
    case ']':
      return measure_ram(sign == '[');
    case '!':
      forget_largest_peak();
      return chatter("Resetting max. RAM counter to 0");
    case '/':
      return report_line("Ellapsed time:",
                         text_of("%.2f secs.", wall_clock() - interpreter.stopwatch_start));
    default:
      start_stopwatch();
  }
}

}  // namespace

void watch_command() {
  no_timing();
  if (accept_char(';')) return show_toggle(interpreter.watch, "Watch");
  std::string signs;  // all are read before the first takes effect
  while (!accept_char(';')) {
    const char sign = static_cast<char>(next_nonblank());
    if (known_signs.find(sign) == std::string_view::npos) {
      error_end("Wrong argument for watch:", sign);
    }
    signs += sign;
  }
  for (const char sign : signs) obey(sign);
}

}  // namespace zeb
