// The assumptions block of what is written as NEXUS.
#pragma once

#include "base/output_file.h"
#include "formats/written_cells.h"

namespace zeb {

/// Types, step matrices, weights, inactive characters and taxa, gap mode. Nothing where all is
/// default. Warns of settings that have no place in NEXUS.
void write_nexus_assumptions(output_file& out, const writing_style& style);

}  // namespace zeb
