// Handlers of the commands that report on trees in memory, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table xcomp_options;

void apo_command();
void blength_command();
void change_command();
void chomo_command();
void cscores_command();
void fit_command();
void length_command();
void lmbox_command();
void map_command();
void recons_command();
void scores_command();
void xcomp_command();

}  // namespace zeb
