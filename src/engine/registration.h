// What the engine's floor hands to lower ones at start-up.
#pragma once

namespace zeb {

/// Called once at start-up.
void register_engine();

}  // namespace zeb
