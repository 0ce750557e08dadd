// The TREES block of NEXUS.
#pragma once

#include "formats/nexus/nexus_file.h"

namespace zeb {

/// Reads from the ";" of "begin trees;" on, up to the "end;" of the block.
void read_trees_block(nexus_file& file);

}  // namespace zeb
