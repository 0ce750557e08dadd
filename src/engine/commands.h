// Handlers of the engine's commands, for the command table.
#pragma once

namespace zeb {

void chomo_command();
void collapse_command();
void condense_command();
void cscores_command();
void fit_command();
void length_command();
void qcollapse_command();
void scores_command();
void tzert_command();

}  // namespace zeb
