// How a command ends before its time: by an error, by a warning that the user heeds, by the user's
// stop.
#pragma once

#include <string>

namespace zeb {

/// Shows the message with its place, closes all input but level 0, and ends a background run, which
/// nobody could put right.
void tell_error(const std::string& message);
/// Shows a warning; a user who was asked and doesn't want to go on interrupts the command.
void tell_warning(const std::string& message);
/// The look at keys and steering files, or the wait for a key.
void look_for_interrupt(bool wait);

}  // namespace zeb
