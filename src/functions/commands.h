// Handlers of commands that need the expression functions' view of all rooms.
#pragma once

namespace zeb {

struct option_table;
extern const option_table barplot_options;

void barplot_command();
void maketable_command();

}  // namespace zeb
