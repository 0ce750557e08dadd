// Small commands that change one setting.
#include "base/errors.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/commands/commands.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/toggles.h"

namespace zeb {
namespace {

constexpr std::size_t longest_break_text = 254;
constexpr long long longest_time_limit = 1'000'000LL * 3600;  // seconds

// "+T/R/N": each number may be left out, and counts as 0 then.
void read_status_record() {
  int values[3] = {0, 0, 0};
  for (int i = 0; i < 3; ++i) {
    int value = 0;
    if (read_optional_int(&value)) {
      if (value < 0) error_end("Interval for record of search status can't be negative");
      values[i] = value;
    }
    if (!accept_char('/')) break;
  }
  expect_end();
  set_status_intervals(values[0], values[1], values[2]);
}

// "[" and "]" switch a second setting of the command.
bool bracket_toggle(bool& setting, const char* subject) {
  const bool on = accept_char('[');
  if (!on && !accept_char(']')) return false;
  expect_end();
  setting = on;
  show_toggle(on, subject);
  return true;
}

void show_status_record() {
  std::string text;
  const auto add = [&text](int every, const char* format) {
    if (every == 0) return;
    if (!text.empty()) text += ", and ";
    text += text_of(format, every);
  };
  add(settings.status_seconds, "every %i secs.");
  add(settings.status_trees, "every %i tree(s)");
  add(settings.status_replications, "every %i rep(s).");
  emit("Record search status: ", text.empty() ? "none" : text, "\n");
}

}  // namespace

void beep_command() { toggle_command(settings.beep, "Beep"); }
void warn_command() { toggle_command(settings.warn, "Warn"); }

void break_command() {
  no_timing();
  if (accept_char('/')) {
    if (skip_blanks_peek() != ';') {
      std::string text = read_to_semicolon();
      if (text.size() > longest_break_text) {
        error_end("Warning message too long (max.= 254 characters)");
      }
      set_break_text(std::move(text));
      return;
    }
    expect_end();
    set_break_polling(!settings.break_polling);
    return show_toggle(settings.break_polling, "Break");
  }
  const bool plain = skip_blanks_peek() == '=';
  toggle_command(settings.break_polling, "Break");
  if (plain) set_break_text({});
}

void echo_command() {
  no_timing();
  if (bracket_toggle(settings.echo_console_to_log, "Echo of console lines to the log")) return;
  toggle_command(settings.echo, "Echo");
}

void report_command() {
  no_timing();
  if (accept_char('+')) {
    read_status_record();
    return show_status_record();
  }
  if (bracket_toggle(settings.progress_bars, "Progress of long commands")) return;
  toggle_command(settings.report, "Report");
}

void timeout_command() {
  no_timing();
  int fields[3];
  int count = 0;
  int value = 0;
  while (read_optional_int(&value) && value >= 0) {
    if (count < 3) fields[count] = value;
    ++count;
    if (!accept_char(':')) break;
  }
  if (count > 0) {
    long long seconds = 0;
    for (int i = 0; i < std::min(count, 3); ++i) seconds = 60 * seconds + fields[i];
    if (seconds > longest_time_limit) {
      error_end("Time-out can't be longer than", longest_time_limit / 3600, "hours");
    }
    set_time_limit(static_cast<unsigned>(seconds));
  }
  const unsigned s = time_limit.seconds;
  emit(text_of("Time-out for searches is %i:%02i:%02i", static_cast<int>(s / 3600),
               static_cast<int>(s / 60 % 60), static_cast<int>(s % 60)),
       s == 0 ? " (i.e. no time-out!)\n" : "\n");
  skip_to(';');
}

}  // namespace zeb
