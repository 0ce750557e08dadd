// Handlers and option tables of the commands that measure support, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table qnelsen_options;

void qnelsen_command();

}  // namespace zeb
