// Handlers of the commands on trees, for the command table.
#pragma once

namespace zeb {

void hold_command();
void keep_command();
void save_command();
void shortread_command();
void tchoose_command();
void tread_command();
void tsave_command();
void tvault_command();

}  // namespace zeb
