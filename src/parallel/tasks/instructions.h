// The instructions of a task: where they begin, where they are to go on, how they end.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// Of two words: instructions for tasks follow, up to their `return`.
bool begins_instructions(std::string_view before, std::string_view next);
void begin_instructions(const std::string& text);
/// Where the parent wants to have the task at a `tagset`, skips the commands before it. False: the
/// instructions end before.
bool skip_to_wanted_tag();
/// `return` at the end of the instructions: reads what is to be sent.
void read_return();
/// Instructions that end before their time end with their last `return`.
void run_last_return();

}  // namespace zeb
