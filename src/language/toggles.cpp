#include "language/toggles.h"

#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"

namespace zeb {

void show_toggle(bool value, const char* subject, bool plural) {
  if (!settings.report) return;
  report_line(subject, plural ? "are" : "is", value ? "ON" : "OFF");
}

void toggle_command(bool& setting, const char* subject, bool plural) {
  no_timing();
  bool value = setting;
  if (accept_char('=')) {
    value = true;
  } else if (accept_char('-')) {
    value = false;
  } else if (accept_char('/')) {
    value = !setting;
  }
  expect_end();
  setting = value;
  show_toggle(setting, subject, plural);
}

}  // namespace zeb
