// "usertype": step matrices of NEXUS, kept with the matrix.
#pragma once

#include "formats/nexus/nexus_file.h"

namespace zeb {

/// Reads the rest of the command after the word "usertype", up to its ";".
void read_nexus_step_matrix(nexus_file& file);

}  // namespace zeb
