// What the reports on stored trees lend to lower floors.
#pragma once

namespace zeb {

/// Called once at start-up.
void register_mapping();

}  // namespace zeb
