// The "matrix" command of NEXUS data blocks: rows of symbols or values, sequential or interleaved.
#pragma once

#include "formats/nexus/data_format.h"
#include "formats/nexus/nexus_file.h"

namespace zeb {

/// From now on gaps are states, in the data that were read as well.
void make_gaps_states(nexus_file& file);
/// Reads the rows into the matrix that was laid out, up to the ";", and makes it current.
void read_nexus_matrix(nexus_file& file, const nexus_format& format);

}  // namespace zeb
