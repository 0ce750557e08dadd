// Handlers and option tables of the commands that compare trees, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table matchtax_options;
extern const option_table mixtrees_options;
extern const option_table mrp_options;
extern const option_table rcompl_options;
extern const option_table sprdiff_options;
extern const option_table tcomp_options;

void matchtax_command();
void mixtrees_command();
void mrp_command();
void rcompl_command();
void sprdiff_command();
void tcomp_command();

}  // namespace zeb
