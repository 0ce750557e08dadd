// Handlers of the commands on the data matrix and its settings, for the command table.
#pragma once

namespace zeb {

void info_command();
void minmax_command();
void nstates_command();
void xperm_command();
void xread_command();
void xwipe_command();

}  // namespace zeb
