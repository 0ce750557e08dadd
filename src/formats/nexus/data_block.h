// The TAXA, DATA and CHARACTERS blocks of NEXUS.
#pragma once

#include "formats/nexus/nexus_file.h"

namespace zeb {

/// These read from the ";" of "begin NAME;" on, up to the "end;" of the block.
void read_taxa_block(nexus_file& file);
/// `brings_taxa`: without being told, further blocks may have taxa that the first one hadn't.
void read_data_block(nexus_file& file, bool brings_taxa);

}  // namespace zeb
