// One line of progress at the console.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace zeb {

/// Progress of a command: `done` of `total`, at most a few times a second, rewritten in place on a
/// terminal; nothing in a pipe or in the background, nor with `report` off.
void show_progress(std::string_view label, double done, double total);
/// Progress as a table, rewritten in place. False, and nothing shown, where there is no room for
/// it.
bool show_progress_table(std::span<const std::string> rows);
/// The same for a script, which is made of many commands: it stays when the command ends, and shows
/// with `report` off too.
void show_script_progress(std::string_view label, double done, double total);
void clear_progress();
/// Wipes the progress of the command that is over; that of a script stays.
void clear_command_progress();

}  // namespace zeb
