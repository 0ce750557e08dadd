#include "console/output.h"

#include <exception>

#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "base/text_columns.h"
#include "console/log.h"
#include "console/screen.h"
#include "console/settings.h"
#include "console/text_buffer.h"

namespace zeb {

output_state output;

namespace {

constexpr std::size_t line_buffer_size = 2048;

// Text that waits for the next flush; `line_start` is where its last line begins.
struct line_buffer_state {
  std::string text;
  std::size_t line_start = 0;
  bool line_full = false;
};
line_buffer_state line_buffer;

void append(char c) {
  std::string& text = line_buffer.text;
  if (c == '\n') {
    text += c;
    line_buffer.line_start = text.size();
    line_buffer.line_full = false;
    if (text.size() >= line_buffer_size) flush_line();
    return;
  }
  if (line_buffer.line_full) return;
  if (text.size() - line_buffer.line_start < line_buffer_size) {
    text += c;
    return;
  }
  line_buffer.line_full = true;
  // Don't leave the first bytes of a character whose last ones are cut.
  text += c;
  const std::string_view line = std::string_view(text).substr(line_buffer.line_start);
  text.resize(line_buffer.line_start + text_in_bytes(line, line_buffer_size).size());
}

void append(std::string_view text) {
  for (const char c : text) append(c);
}

// Texts of files end up here by many ways: nothing in them may steer a terminal. What moves the
// cursor within the text stays.
std::string without_terminal_codes(const std::string& text) {
  constexpr std::string_view harmless = "\n\t\r\a\b";
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool is_c0 =
        (byte < 32 && harmless.find(text[i]) == std::string_view::npos) || byte == 127;
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    const bool is_c1 = byte == 0xc2 && next >= 0x80 && next < 0xa0;
    if (is_c1) ++i;
    result += is_c0 || is_c1 ? ' ' : text[i];
  }
  return result;
}

void add_to_text_buffer(std::string_view text) {
  if (display_buffer.add(text)) return;
  report_line("NOTE: wrapped lines before wrapping buffer contents!");
}

// Looks at the keyboard, so that whatever prints can be interrupted; not while that look itself
// prints, and not while an error unwinds.
void poll_for_interrupt() {
  if (output.polling || std::uncaught_exceptions() > 0) return;
  struct polling_scope {
    polling_scope() { output.polling = true; }
    ~polling_scope() { output.polling = false; }
  } const scope;
  check_interrupt();
}

}  // namespace

void emit_parts(std::initializer_list<message_part> parts) {
  for (const message_part& part : parts) append(part.text());
  flush_line();
}

void report_line_parts(std::initializer_list<message_part> parts) {
  for (const message_part& part : parts) {
    append(part.text());
    append(' ');
  }
  append('\n');
  flush_line();
}

void emitf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted_text(format, arguments);
  va_end(arguments);
  report_line(text);
}

void newline() { emit(" \n"); }

void flush_line() {
  const std::string text = without_terminal_codes(line_buffer.text);
  line_buffer = {};
  if (output.capture) {
    std::vector<captured_piece>& pieces = output.capture->pieces_;
    if (pieces.empty() || pieces.back().is_warning || pieces.back().mask != output.output_mask)
      pieces.push_back({output.output_mask, {}});
    pieces.back().text += text;
    return;
  }
  if (log_is_open() && !(output.output_mask & no_log)) write_log(text);
  if (!(output.output_mask & no_text_buffer)) add_to_text_buffer(text);
  if ((output.output_mask & no_console) || process.background) return;
  poll_for_interrupt();
  hide_progress();
  show_lines(text);
}

output_capture::output_capture() : outer_(output.capture) { output.capture = this; }
output_capture::~output_capture() { output.capture = outer_; }

void output_capture::add_warning(const std::string& message) {
  pieces_.push_back({output.output_mask, message, true});
}

std::string output_capture::text() const {
  std::string all;
  for (const captured_piece& piece : pieces_) all += piece.text;
  return all;
}

void reset_output() { line_buffer = {}; }

void close_places(unsigned places) { output.output_mask |= places; }
void open_places(unsigned places) { output.output_mask &= ~places; }

void view_to_end() { display_buffer.view_offset = 0; }

}  // namespace zeb
