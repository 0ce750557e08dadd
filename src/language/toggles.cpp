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

bool read_toggle(bool setting) {
  if (accept_char('=')) {
    setting = true;
  } else if (accept_char('-')) {
    setting = false;
  } else if (accept_char('/')) {
    setting = !setting;
  }
  expect_end();
  return setting;
}

void toggle_command(bool& setting, const char* subject, bool plural) {
  no_timing();
  setting = read_toggle(setting);
  show_toggle(setting, subject, plural);
}

}  // namespace zeb
