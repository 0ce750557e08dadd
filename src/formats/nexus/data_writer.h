// The data block of what is written as NEXUS.
#pragma once

#include "base/output_file.h"
#include "formats/written_cells.h"
#include "formats/written_words.h"

namespace zeb {

/// "#NEXUS" and the data block. Continuous characters in their original scale.
void write_nexus_data(output_file& out, const writing_style& style, const word_writer& words);

}  // namespace zeb
