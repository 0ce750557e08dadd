// Handlers and option tables of the engine's commands, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table collapse_options;

void collapse_command();
void condense_command();
void qcollapse_command();
void piwe_command();
void tzert_command();
void xpiwe_command();

}  // namespace zeb
