// Handlers of the engine's commands, for the command table.
#pragma once

namespace zeb {

void collapse_command();
void condense_command();
void qcollapse_command();
void tzert_command();

}  // namespace zeb
