// The ASSUMPTIONS, SETS and PAUP blocks of NEXUS: types, weights, activity of characters and taxa,
// step matrices.
#pragma once

#include "formats/nexus/nexus_file.h"

namespace zeb {

/// Reads from the ";" of "begin NAME;" on, up to the "end;" of the block.
void read_assumptions_block(nexus_file& file);
/// "options deftype=ord gapmode=newstate ...;", "pset gapmode=newstate;", after the word.
void read_nexus_options(nexus_file& file);

}  // namespace zeb
