// PHYLIP matrices: "ntax nchar", then rows. Names take ten characters (strict) or go up to a blank
// (relaxed); rows may be sequential or interleaved.
#pragma once

#include <string>

namespace zeb {

/// Reads a matrix; of the four forms, the first that gives rows of the length that the head says.
/// Of the type named, or of the one that fits where the word is empty.
void read_phylip_file(const std::string& type_word, const std::string& file);

}  // namespace zeb
