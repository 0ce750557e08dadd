// How a command fails: `error_end` has a message shown with its place and throws to the innermost
// jump context; `warning` has one shown and goes on.
#pragma once

#include <concepts>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

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

/// Ends the running command: builds the message from the parts, each followed by a blank, shows it
/// under the place where it happened, closes all input and throws `command_unwinding`. The matrix,
/// trees and settings survive. Ends the process with status 255 in the background.
[[noreturn]] void raise_error(std::span<const message_part> parts);
template <class... part>
[[noreturn]] void error_end(const part&... parts) {
  const message_part list[] = {message_part(parts)...};
  raise_error(list);
}
/// The same from a printf format; the text is cut at 10,000 characters.
[[noreturn]] void error_end_f(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// While an exception of the standard library is handled: ends the command with the error that it
/// stands for.
[[noreturn]] void raise_standard_error();
/// Runs a task that may fail as a command does, in a jump context of its own.
void run_in_jump_context(void (*task)());

/// Shows a warning. With `warn` on and a user to ask, a "n" ends the command as an interrupt does.
void raise_warning(std::span<const message_part> parts);
template <class... part>
void warning(const part&... parts) {
  const message_part list[] = {message_part(parts)...};
  raise_warning(list);
}
void warning_f(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Internal invariant, cheap, kept in release builds: ends the command with an internal error.
[[noreturn]] void internal_error(const char* what, const char* file, int line);
#define ALWAYS_CHECK(condition, what) \
  ((condition) ? static_cast<void>(0) : ::zeb::internal_error(what, __FILE__, __LINE__))

}  // namespace zeb
