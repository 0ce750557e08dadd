// Named sets of NEXUS files: lists may refer to them, and they become groups.
#pragma once

#include "formats/nexus/nexus_file.h"

namespace zeb {

/// "charset" and "taxset", after the word.
void read_named_set(nexus_file& file, nexus_list kind);
/// "codonposset": positions in codons become groups of characters.
void read_codon_positions(nexus_file& file);
/// Which groups were made since this was told, and which sets found no place.
void tell_groups(nexus_file& file);

}  // namespace zeb
