// Handlers and option tables of the commands on landmarks, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table lmark_options;

void lmark_command();

}  // namespace zeb
