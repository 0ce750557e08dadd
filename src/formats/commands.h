// Handlers of the commands on foreign formats, for the command table.
#pragma once

namespace zeb {

void export_command();

}  // namespace zeb
