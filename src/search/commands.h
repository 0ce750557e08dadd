// The handlers of the search commands, for the command table.
#pragma once

namespace zeb {

void bbreak_command();
void mult_command();

}  // namespace zeb
