// `quote` prints text as it stands, `lquote` tells how.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string>

#include "base/process.h"
#include "console/console.h"
#include "console/output.h"
#include "console/screen.h"
#include "language/commands/commands.h"
#include "language/commands/quote_command.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/toggles.h"

namespace zeb {

quote_settings quotes;

namespace {

// A line at a time, since the line buffer cuts what doesn't fit.
void emit_lines(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::size_t length = end == text.npos ? text.size() : end + 1;
    emit(text.substr(0, length));
    text.remove_prefix(length);
  }
}

void say(std::string_view text) {
  emit_lines(text);
  const bool shown_there =
      !process.background && !process.batch && !(output.output_mask & no_console);
  if (quotes.to_stderr && !shown_there) {
    std::fwrite(text.data(), 1, text.size(), stderr);
  }
}

void rub_out_line() {
  if (!user_present()) return;
  std::string wipe;
  for (int i = 1; i < screen.columns; ++i) wipe += "\b \b";
  write_console(wipe + "\r");
}

// "&N": the text so far goes out before a code that moves the cursor.
void say_with_conversions(std::string_view text) {
  std::string ready;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '&' || i + 1 == text.size() ||
        !std::isdigit(static_cast<unsigned char>(text[i + 1]))) {
      ready += text[i];
      continue;
    }
    int code = 0;
    std::size_t digits_end = i + 1;
    while (digits_end < text.size() && std::isdigit(static_cast<unsigned char>(text[digits_end]))) {
      code = std::min(10 * code + (text[digits_end++] - '0'), 1000);
    }
    if (code > 255) {  // no character has it: the text stays
      ready += text[i];
      continue;
    }
    i = digits_end - 1;
    if (code > 1) {
      ready += static_cast<char>(code);
      continue;
    }
    say(ready);
    ready.clear();
    if (code == 0) rub_out_line();
    if (code == 1 && user_present()) write_console("\b");
  }
  say(ready);
}

bool toggled(bool& setting, int on, int off, const char* subject) {
  const bool value = accept_char(on);
  if (!value && !accept_char(off)) return false;
  expect_end();
  setting = value;
  show_toggle(setting, subject);
  return true;
}

}  // namespace

void quote_command() {
  std::string text = read_quoted_text();
  const bool unmasked = text.starts_with(':');
  const output_mask_scope mask(unmasked ? 0 : output.output_mask);
  if (unmasked) text.erase(0, 1);
  if (!quotes.literal) text += '\n';
  if (quotes.conversions) {
    say_with_conversions(text);
  } else {
    say(text);
  }
}

void lquote_command() {
  no_timing();
  if (toggled(quotes.conversions, '[', ']', "Conversion of \"&N\" in quotes")) return;
  if (toggled(quotes.to_stderr, '>', '<', "Quoting to the standard error")) return;
  toggle_command(quotes.literal, "Literal quotes", true);
}

}  // namespace zeb
