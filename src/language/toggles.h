// The convention of the many commands that switch one setting on and off.
#pragma once

namespace zeb {

/// A toggling command: "=" on, "-" off, "/" flip, nothing shows. The state is shown as the subject
/// and "is ON" or "is OFF" when `report` is on. `plural` prints "are".
void toggle_command(bool& setting, const char* subject, bool plural = false);
/// What such a command's arguments make of a setting: "=" on, "-" off, "/" the other one.
bool read_toggle(bool setting);
/// Shows "Subject is ON".
void show_toggle(bool value, const char* subject, bool plural = false);

}  // namespace zeb
