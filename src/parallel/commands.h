// Handlers of the commands of parallel runs.
#pragma once

namespace zeb {

void pzeb_command();
void slaveget_command();
void slaveset_command();
void tagset_command();

}  // namespace zeb
