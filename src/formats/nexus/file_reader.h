// NEXUS files (Maddison, Swofford and Maddison 1997), from block to block.
#pragma once

namespace zeb {

/// Reads a whole NEXUS file from the top frame, from the end of "#NEXUS" on.
void read_nexus();

}  // namespace zeb
