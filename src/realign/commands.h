// Handlers and option tables of the commands that realign landmarks, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table lmrealign_options;

void lmrealign_command();

}  // namespace zeb
