// The TAXA, DATA and CHARACTERS blocks of NEXUS.
#pragma once

#include "formats/nexus/nexus_file.h"

namespace zeb {

/// These read from the ";" of "begin NAME;" on, up to the "end;" of the block.
void read_taxa_block(nexus_file& file);
void read_data_block(nexus_file& file);

}  // namespace zeb
