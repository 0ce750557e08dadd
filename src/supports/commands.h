// Handlers and option tables of the commands that measure support, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table bsupport_options;
extern const option_table qnelsen_options;
extern const option_table resample_options;

void bsupport_command();
void qnelsen_command();
void resample_command();

}  // namespace zeb
