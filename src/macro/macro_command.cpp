// The switch of the macro language and its limits: `macro`, `macfloat`, `safe`, `private`,
// `macreport`, `macseed`, `resettime`.
#include <cctype>
#include <ctime>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "language/settings_scope.h"
#include "language/toggles.h"
#include "macro/bodies.h"
#include "macro/commands.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/script_text.h"
#include "macro/variables.h"

namespace zeb {

namespace {

void switch_macros(bool on) {
  if (on == macros_on()) {
    report_line(on ? "Macro language is ON" : "Macro language is OFF");
    if (on) report_line(macro_memory_text());
    return;
  }
  if (settings_come_back())
    error_end("The macro language can't be switched by commands that run within a search");
  if (on) {
    start_macros();
    report_line("Macro language is ON");
    report_line(macro_memory_text());
  } else {
    stop_macros();
    report_line("Macro language is OFF");
  }
}

void set_protection() {
  const int level = read_int();
  check_end();
  if (level < 0) {
    report_line("Protection mode for macros is", macros.protection);
    return;
  }
  if (level > 2) error_end("Protection level is 0-2");
  if (macros_on() && (level == 0) != (macros.protection == 0)) {
    error_end("Protection must be set with macros turned off");
  }
  macros.protection = level;
  report_line("Protection mode for macros is", macros.protection);
}

void set_limits() {
  const int loops = read_int();
  const int vars = read_int();
  check_end();
  if (macros_on()) {
    warning(
        "Numbers of loops/variables must be changed under \"macro-\"\nRequest to change numbers of "
        "loops/variables will be ignored");
  } else {
    constexpr int most_loops = 100'000;
    constexpr int most_variables = 100'000'000;
    if (loops > most_loops || vars > most_variables) {
      error_end("Macros can have", most_loops, "loops and", most_variables,
                "user variables at the most");
    }
    if (loops > 0) macros.max_loops = loops;
    if (vars > 0) macros.max_variables = vars;
  }
  report_line(macros.max_loops, "loops and", macros.max_variables, "user variables");
}

void set_memory() {
  const int kilobytes = read_int();
  check_end();
  if (kilobytes >= 0) {
    if (macros_on()) warning("RAM can be reset only with macros OFF (request will be ignored)");
    macros.memory_bytes = static_cast<std::int64_t>(kilobytes) * 1000 + 16;
    if (macros_on()) return;
  }
  std::string text = "RAM for macros is " + std::to_string(macros.memory_bytes / 1000) + " KBytes";
  if (macros_on()) {
    text += text_of(" (%zu%% is in use)", macro_memory_used() * 100 / macros.memory_size);
  }
  report_line(text);
}

}  // namespace

void macro_command() {
  no_timing();
  const int c = skip_blanks_peek();
  switch (c) {
    case ';':
      report_line(macros_on() ? "Macro language is ON" : "Macro language is OFF");
      if (macros_on()) report_line(macro_memory_text());
      return;
    case '=':
    case '-':
      next_nonblank();
      check_end();
      switch_macros(c == '=');
      return;
    case '/':
      next_nonblank();
      check_end();
      switch_macros(!macros_on());
      return;
    case '!':
    case '+':
      next_nonblank();
      check_end();
      macros.names_as_numbers = c == '+';
      report_line(macros.names_as_numbers ? "Reading taxon/character names as numbers in macros"
                                          : "Not reading taxon/character names in macros");
      return;
    case '*':
      next_nonblank();
      set_limits();
      return;
    case '[':
      next_nonblank();
      set_memory();
      return;
    default:
      break;
  }
  constexpr std::string_view words[] = {"protection"};
  if (read_word() > 0 && find_keyword(token(), words) == 0) {
    set_protection();
    return;
  }
  error_end("Wrong argument for macro:",
            token().empty() ? std::string(1, static_cast<char>(c)) : std::string(token()));
}

void macfloat_command() {
  no_timing();
  const int c = skip_blanks_peek();
  if (c == '=' || c == '-') {
    next_nonblank();
    if (c == '-' && std::isdigit(peek_raw_char())) {
      read_int();  // a negative number of decimals says nothing
      check_end();
      return;
    }
    check_end();
    if (macros_on()) error_end("Cannot change setting of integer only with macros ON");
    macros.integer_only = c == '-';
    report_line(macros.integer_only ? "Macros will use integer-only"
                                    : "Macros will use floating point operations");
    return;
  }
  if (c == '*') {
    next_nonblank();
    check_end();
    macros.number_format = "%f";
    macros.digits = 10;
    report_line("Floating point printing uses defaults");
    return;
  }
  if (c == 'e' || c == 'E') {
    next_nonblank();
    check_end();
    macros.number_format = "%g";
    macros.digits = 6;
    report_line("Floating point printing uses exponential notation");
    return;
  }
  if (c == ';') {
    report_line(macros.integer_only ? "Macros will use integer-only"
                                    : "Macros will use floating point operations");
    report_line("Floating point printing uses", macros.digits, "digits");
    return;
  }
  const int digits = read_int();
  check_end();
  if (digits < 0) return;
  if (digits > 60) error_end("Floating point printing can use 60 digits at the most");
  macros.number_format = text_of("%%.%if", digits);
  macros.digits = digits;
  report_line("Floating point printing uses", digits, "digits");
}

void safe_command() {
  require_macros();
  no_timing();
  read_word();
  constexpr std::string_view kinds[] = {"vars", "loops", "ram"};
  const int what = find_keyword(token(), kinds);
  const bool vars = what == 0;
  const bool loops = what == 1;
  const bool ram = what == 2;
  if (what < 0) error_end("Must specify either vars, loops, or ram");
  const std::int64_t wanted = read_int();
  check_end();
  if (vars && var_shift() + wanted >= macros.max_variables) {
    error_end("Only", macros.max_variables - var_shift(), "vars. available");
  }
  const int open = open_bodies(body_kind::loop);
  if (loops && open + wanted > macros.max_loops) {
    error_end("Only", macros.max_loops - open, "loops available");
  }
  const std::int64_t free = macros.heap_end - macros.heap_top;
  if (ram && wanted > free) error_end("Only", free, "bytes available");
}

void private_command() {
  require_macros();
  no_timing();
  int count = 0;
  if (!read_optional_int(&count)) count = macros.frames.back().private_count;
  check_end();
  if (count < 0) error_end("Can't set private variables to less than 0");
  if (count > macros.max_variables) error_end("Only", macros.max_variables, "variables available");
  macros.frames.back().private_count = count;
  if (settings.report) {
    const char* name = input.frames[static_cast<std::size_t>(input.top)]->name;
    emitf("%i private variables in %s (var. shift=%i)", count, name, var_shift());
  }
}

void macreport_command() {
  require_macros();
  toggle_command(macros.report, "Macro reports", true);
}

void macseed_command() {
  require_macros();
  no_timing();
  const int seed = read_int();
  check_end();
  if (seed < 0) {
    report_line("Current seed for Macros is", macros.seed);
    return;
  }
  if (seed == 0 && process.slave)
    error_end("Random seed for macros can't be set to 0 (=time) in slaves");
  macros.seed = seed != 0 ? seed
                          : static_cast<int>(static_cast<unsigned>(std::time(nullptr)) ^
                                             static_cast<unsigned>(draw())) &
                                random_generator::largest;
  macros.generator.seed(static_cast<unsigned>(macros.seed));
}

void resettime_command() {
  require_macros();
  no_timing();
  check_end();
  macros.clock_start = wall_clock();
  if (settings.report) report_line("Time reset");
}

}  // namespace zeb
