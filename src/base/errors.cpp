#include "base/errors.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "base/message_text.h"
#include "base/process.h"
#include "console/console.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"

namespace zeb {
namespace {

constexpr std::size_t longest_message = 2046;
constexpr std::ptrdiff_t shown_before = 37;
constexpr std::ptrdiff_t shown_width = 75;

// All the parts, each followed by a blank; a part that no longer fits is left out.
std::string joined(std::span<const message_part> parts) {
  std::string text;
  for (const message_part& part : parts) {
    if (text.size() + part.text().size() + 1 > longest_message) continue;
    text += part.text();
    text += ' ';
  }
  return text;
}

void show_place() {
  const input_frame& frame = top_frame();
  if (frame.stream && !frame.is_terminal && !(input.top == 0 && process.command_line_input)) {
    report_line("Error reading", frame.name);
  }
  show_text_place(start_of_shown_text(frame), input.read_position);
}

std::string formatted(const char* format, va_list arguments) {
  char text[10000];
  std::vsnprintf(text, sizeof text, format, arguments);
  return text;
}

}  // namespace

const char* start_of_shown_text(const input_frame& frame) {
  if (input.top > 0 || !frame.typed_line) return frame.text;
  return std::min<const char*>(frame.typed_line, input.read_position);
}

void show_text_place(const char* text, const char* position) {
  const char* end = text + std::strlen(text);
  if (position < text || position > end || text == end) return;
  const std::ptrdiff_t length = end - text;
  const std::ptrdiff_t place = position - text;
  std::ptrdiff_t first = std::max<std::ptrdiff_t>(0, place - shown_before);
  if (length - first < shown_width) first = std::max<std::ptrdiff_t>(0, length - shown_width);
  std::string shown(text + first, static_cast<std::size_t>(std::min(shown_width, length - first)));
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < 32) c = ' ';
  }
  emit(shown, "\n");
  emit(std::string(static_cast<std::size_t>(place - first), ' '), "^\n");
}

void raise_error(std::span<const message_part> parts) {
  const std::string message = joined(parts);
  input.literal_comma = false;
  input.in_command_head = false;
  reset_output();
  command_is_over();
  no_timing();
  {
    const output_mask_scope everywhere(0);
    if (settings.echo == 0) settings.echo = 3;
    if (settings.beep) ring_bell();
    if (!input.frames.empty()) {
      if (macro_hooks.show_error_place) {
        macro_hooks.show_error_place();
      } else {
        show_place();
      }
    }
    emit(message, "\n");
  }
  pop_all();
  unwind_command();
}

void error_end_f(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted(format, arguments);
  va_end(arguments);
  error_end(text);
}

int raise_warning(std::span<const message_part> parts) {
  const std::string message = joined(parts);
  if (!settings.warn || !user_present()) {
    const output_mask_scope shown(output.output_mask & ~static_cast<unsigned>(no_console));
    emit(output.console_mode ? "\n\r" : "\n");
    emit("WARNING:\n");
    emit(message, "\n");
    return 0;
  }
  if (settings.beep) ring_bell();
  emit(text_of("WARNING - %s", message.c_str()), "\n");
  if (ask_key("Continue? ", "yn") == 'y') {
    write_console("\r" + std::string(80, ' ') + "\r");
    return 0;
  }
  user_interrupt();
  unwind_interrupted_command();
}

int warning_f(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted(format, arguments);
  va_end(arguments);
  return warning(text);
}

void internal_error(const char* what, const char* file, int line) {
  const char* name = std::strrchr(file, '/');
  error_end("Internal error:", what, text_of("(%s, line %i)", name ? name + 1 : file, line));
}

}  // namespace zeb
