// The "matrix" command of NEXUS data blocks: rows of symbols or values, sequential or interleaved.
#pragma once

#include "formats/nexus/data_format.h"
#include "formats/nexus/nexus_file.h"

namespace zeb {

/// From now on gaps are states, in the data that were read as well.
void make_gaps_states(nexus_file& file);
/// Lays out a matrix and reads the rows up to the ";" into it. Further blocks of a file add their
/// characters to those that were read, continuous ones before the others.
void read_nexus_matrix(nexus_file& file, const nexus_format& format, const std::string& title);

}  // namespace zeb
