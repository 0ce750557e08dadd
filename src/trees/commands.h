// Handlers and option tables of the commands on trees, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table addition_options;
extern const option_table edit_options;
extern const option_table figure_options;
extern const option_table riddup_options;

void absincl_command();
void alltrees_command();
void edit_command();
void hold_command();
void incltax_command();
void keep_command();
void pruntax_command();
void randtrees_command();
void reroot_command();
void riddup_command();
void sort_command();
void tchoose_command();
void tequal_command();
void tgroup_command();
void tnodes_command();
void tsize_command();
void tvault_command();
void unique_command();
void unshared_command();

// constraints
void constrain_command();
void force_command();
void mono_command();

// notation
void save_command();
void shortread_command();
void tread_command();
void tsave_command();

// drawing
void lintrees_command();
void naked_command();
void tables_command();
void tplot_command();
void tshrink_command();
void ttags_command();

/// What `ttags &` does: draws the tag tree into a file, with "+" adds to the open drawing, or
/// closes it.
void graphic_tags();
/// What `ttags &+` does: adds lines, rectangles and texts to the open drawing.
void add_to_drawing();

}  // namespace zeb
