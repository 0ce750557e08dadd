// Handlers and option tables of the commands that compare trees, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table tcomp_options;

void tcomp_command();

}  // namespace zeb
