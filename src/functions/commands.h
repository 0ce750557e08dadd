// Handlers of commands that need the expression functions' view of all rooms.
#pragma once

namespace zeb {

void maketable_command();

}  // namespace zeb
