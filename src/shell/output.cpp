#include "shell/output.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "shell/process.h"

namespace zeb {

output_state output;

namespace {

constexpr std::size_t line_buffer_size = 2048;
constexpr std::size_t longest_format = 10000;

std::string line_buffer;

void append(std::string_view text) {
  if (line_buffer.size() + text.size() <= line_buffer_size) {
    line_buffer.append(text);
  } else {
    line_buffer.append(text.substr(0, line_buffer_size - line_buffer.size()));
    if (text.ends_with('\n')) line_buffer.back() = '\n';
  }
}

std::string formatted(const char* format, va_list arguments) {
  std::string text(longest_format, 0);
  const int n = std::vsnprintf(text.data(), text.size(), format, arguments);
  text.resize(std::min(text.size() - 1, static_cast<std::size_t>(std::max(n, 0))));
  return text;
}

}  // namespace

void emit_parts(std::initializer_list<message_part> parts) {
  for (const message_part& part : parts) append(part.text());
  flush_line();
}

void report_line_parts(std::initializer_list<message_part> parts) {
  for (const message_part& part : parts) {
    append(part.text());
    append(" ");
  }
  append("\n");
  flush_line();
}

void emitf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted(format, arguments);
  va_end(arguments);
  report_line(text);
}

void newline() { emit(" \n"); }

void flush_line() {
  std::string text;
  text.swap(line_buffer);
  if (output.output_diversion != 0) {
    if (output.output_diversion == 2 && output.log_stream) {
      std::fwrite(text.data(), 1, text.size(), output.log_stream);
      std::fflush(output.log_stream);
    }
    return;
  }
  if (output.log_stream && !(output.output_mask & no_log)) {
    std::fwrite(text.data(), 1, text.size(), output.log_stream);
  }
  if ((output.output_mask & no_console) || process.background) return;
  if (settings.break_polling) check_interrupt(1);
  std::fwrite(text.data(), 1, text.size(), stderr);
}

void reset_output() {
  line_buffer.clear();
  output.output_diversion = 0;
}

void flush_log() {
  if (output.log_stream) std::fflush(output.log_stream);
}

void close_log() {
  if (output.log_stream && output.log_stream != stdout) std::fclose(output.log_stream);
  output.log_stream = nullptr;
}

void view_to_end() {}

void put_char(char c) { append(std::string_view(&c, 1)); }

std::string megabytes_text(double bytes) { return text_of("%.2f Mbytes", bytes / 1e6); }

std::string count_with_commas(unsigned long long n) {
  std::string text = std::to_string(n);
  for (auto i = static_cast<std::ptrdiff_t>(text.size()) - 3; i > 0; i -= 3) {
    text.insert(static_cast<std::size_t>(i), 1, ',');
  }
  return text;
}

std::string text_of(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = formatted(format, arguments);
  va_end(arguments);
  return text;
}

std::string joined_list(std::initializer_list<std::string_view> items) {
  std::string text;
  std::size_t place = 0;
  for (const std::string_view item : items) {
    if (place > 0) text += place + 1 == items.size() ? " and " : ", ";
    text += item;
    ++place;
  }
  return text;
}

void show_progress(std::string_view, double, double) {}
void clear_progress() {}

}  // namespace zeb
