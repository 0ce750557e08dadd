// What the rooms above hand to base when the program starts, so that base knows neither the input
// nor the console.
#pragma once

#include <string>

namespace zeb {

/// Filled by `register_console` and `register_language`. Without an entry nothing happens there,
/// which is enough for tests of base alone.
struct base_hooks {
  /// An error ends the command: shows the message with the place where it happened, closes all
  /// input but the first and tells a background run that it is over. Returns; the caller throws.
  void (*tell_error)(const std::string& message) = nullptr;
  /// Shows a warning. Throws `command_unwinding` where a user who was asked doesn't want to go on.
  void (*tell_warning)(const std::string& message) = nullptr;
  /// Looks whether the user wants to stop, or waits for a key that tells.
  void (*check_interrupt)(bool wait) = nullptr;
  /// Closes the log and gives the terminal back: the process ends.
  void (*close_outputs)() = nullptr;
};
extern base_hooks hooks_of_base;

}  // namespace zeb
