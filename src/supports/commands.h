// The handlers of the commands that measure support, for the command table.
#pragma once

namespace zeb {

void qnelsen_command();

}  // namespace zeb
