// What the engine's floor hands to lower ones at start-up.
#pragma once

namespace zeb {

void register_engine();
/// Part of it: what `xread :` writes.
void register_node_rows();

}  // namespace zeb
