// Handlers and option tables of the commands on foreign formats, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table export_options;

void export_command();

}  // namespace zeb
