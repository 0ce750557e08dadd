// PHYLIP matrices: "ntax nchar", then rows. Names take ten characters (strict) or go up to a blank
// (relaxed); rows may be sequential or interleaved.
#pragma once

#include <string>

#include "base/input_file.h"

namespace zeb {

/// Reads a matrix; of the four forms, the first that gives rows of the length that the head says.
/// Of the type named, or of the one that fits where the word is empty.
void read_phylip_file(const std::string& type_word, input_file& file);

}  // namespace zeb
