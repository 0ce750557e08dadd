// The progress line's place on the screen; see `show_progress` in output.h.
#pragma once

#include <string_view>

namespace zeb {

/// As `show_progress`, but also with `report` off, and it stays when the command ends: progress of
/// a script, which is made of many commands.
void show_progress_line(std::string_view label, double done, double total);

/// Wipes the progress line, so that other text can take its place; it returns with the next report.
void hide_progress();
/// Wipes the progress of the command that is over; that of a script stays.
void end_progress_of_command();

}  // namespace zeb
