// Handlers and option tables of the commands on the data matrix and its settings, for the command
// table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table block_options;
extern const option_table nstates_options;

void agroup_command();
void ancstates_command();
void blocks_command();
void ccode_command();
void ckeep_command();
void cnames_command();
void costs_command();
void cstree_command();
void fillsank_command();
void info_command();
void minmax_command();
void nstates_command();
void outgroup_command();
void smatrix_command();
void taxcode_command();
void taxlabels_command();
void taxname_command();
void usminmax_command();
void xgroup_command();
void xinact_command();
void xperm_command();
void xread_command();
void xwipe_command();

}  // namespace zeb
