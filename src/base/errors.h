// How a command fails: `error_end` writes a message with the place and unwinds to the innermost
// jump context; `warning` writes one and goes on.
#pragma once

#include <concepts>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

/// Thrown by `error_end` and by the interrupt path once the message is out and the input stack is
/// popped. Caught by the jump contexts only: the `try` blocks around the reading of one command,
/// the handler, and a pending `goto [` jump.
struct command_unwinding {};

/// One piece of a message. Converts from texts, characters and integers, so that
/// `error_end("No", kind, number)` reads as it prints.
class message_part {
 public:
  // NOLINTBEGIN(google-explicit-constructor)
  message_part(const char* text) : text_(text ? text : "") {}
  message_part(std::string_view text) : text_(text) {}
  message_part(const std::string& text) : text_(text) {}
  message_part(char c) : text_(1, c) {}
  template <std::integral number>
  message_part(number n) : text_(std::to_string(n)) {}
  // NOLINTEND(google-explicit-constructor)
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

/// Ends the running command: builds the message from the parts, each followed by a blank, shows the
/// place and a caret, pops all input and throws `command_unwinding`. The matrix, trees and settings
/// survive. Ends the process with status 255 in the background.
[[noreturn]] void raise_error(std::span<const message_part> parts);
template <class... part>
[[noreturn]] void error_end(const part&... parts) {
  const message_part list[] = {message_part(parts)...};
  raise_error(list);
}
/// The same from a printf format; the text is cut at 10,000 characters.
[[noreturn]] void error_end_f(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Shows at most 75 characters of a text around a position in it, and a caret under that. Nothing
/// where the position lies outside of the text.
void show_text_place(const char* text, const char* position);

/// Shows a warning. With `warn` on and a user to ask, a "n" ends the command as an interrupt does;
/// otherwise returns 0.
int raise_warning(std::span<const message_part> parts);
template <class... part>
int warning(const part&... parts) {
  const message_part list[] = {message_part(parts)...};
  return raise_warning(list);
}
int warning_f(const char* format, ...) __attribute__((format(printf, 1, 2)));

struct input_frame;
/// Where the text to show of a frame begins: the line for text that was typed, else all there is.
const char* start_of_shown_text(const input_frame& frame);

/// Internal invariant, cheap, kept in release builds: ends the command with an internal error.
[[noreturn]] void internal_error(const char* what, const char* file, int line);
#define ALWAYS_CHECK(condition, what) \
  ((condition) ? static_cast<void>(0) : ::zeb::internal_error(what, __FILE__, __LINE__))

}  // namespace zeb
