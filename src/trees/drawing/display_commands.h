// Handlers of the commands that show trees, tags and tables.
#pragma once

namespace zeb {

struct option_table;
extern const option_table figure_options;

void tplot_command();
void naked_command();
void lintrees_command();
void ttags_command();
void tables_command();

}  // namespace zeb
