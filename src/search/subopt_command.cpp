// `subopt`: how much worse than the best a tree may be and still be kept.
#include "search/commands.h"

#include "base/errors.h"
#include "base/number_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "search/search_settings.h"

namespace zeb {
namespace {

void show_values() {
  emit("Suboptimal values: ", exact_text(search_settings.suboptimal), " (absolute), ",
       exact_text(search_settings.relative_suboptimal), " (relative)\n");
}

double read_bound(const char* what) {
  double value = 0;
  if (!read_optional_float(&value)) error_end("Must give", what, "suboptimal value");
  if (!(value >= 0)) error_end("Suboptimal values can't be negative");
  return value;
}

}  // namespace

void subopt_command() {
  no_timing();
  if (skip_blanks_peek() == ';') return show_values();
  const double absolute = read_bound("absolute");
  double relative = search_settings.relative_suboptimal;
  const int c = skip_blanks_peek();
  if (c == 'x' || c == 'X') {
    read_char();
    relative = read_bound("relative");
  }
  if (skip_blanks_peek() != ';') {
    error_end_f("Found '%c' after the suboptimal value", skip_blanks_peek());
  }
  set_suboptimal(absolute, relative);
  if (settings.report) show_values();
}

}  // namespace zeb
