// `chkbreak` and `progress`: the user's break and the progress bar of scripts.
#include <string>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/process.h"
#include "console/console.h"
#include "console/progress.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/commands.h"
#include "macro/macro_language.h"
#include "macro/macro_values.h"

namespace zeb {

namespace {

constexpr std::size_t longest_label = 145;

// What the bar shows, for `progress=`.
struct script_progress {
  std::string label;
  double done = 0;
  double total = 0;
};
script_progress shown;

double read_amount() {
  if (skip_blanks_peek() == ';') error_end("Progress needs how much is done, and of how much");
  return macro_value();
}

}  // namespace

void chkbreak_command() {
  require_macros();
  no_timing();
  int mode = 1;
  const bool given = read_optional_int(&mode);
  check_end();
  if (process.background) return;
  if (given && mode == 0) {
    if (!user_present()) return;
    write_console("\rPress key to continue ");
    wait_for_go_ahead();
  }
  check_interrupt();
}

void progress_command() {
  require_macros();
  no_timing();
  if (accept_char('/')) {
    check_end();
    clear_progress();
    shown = {};
    return;
  }
  if (accept_char('=')) {
    check_end();
    if (shown.total > 0) show_script_progress(shown.label, shown.done, shown.total);
    return;
  }
  // The lines that commands report would tear the bar apart.
  if (settings.report) error_end("Cannot run progress with report ON");
  const double done = read_amount();
  shown.total = read_amount();
  shown.done = done;
  const comma_reading commas(true);
  shown.label.clear();
  skip_blanks_peek();
  for (int c = read_char(); c != ';'; c = read_char()) {
    if (shown.label.size() < longest_label) shown.label += static_cast<char>(c < 32 ? ' ' : c);
  }
  show_script_progress(shown.label, shown.done, shown.total);
}

}  // namespace zeb
