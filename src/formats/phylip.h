// PHYLIP matrices: "ntax nchar", then rows. Names take ten characters (strict) or go up to a blank
// (relaxed); rows may be sequential or interleaved.
#pragma once

#include <string>

#include "base/input_file.h"
#include "base/output_file.h"
#include "formats/written_words.h"

namespace zeb {

/// Reads a matrix; of the four forms, the first that gives rows of the length that the head says.
/// Of the type named, or of the one that fits where the word is empty.
void read_phylip_file(const std::string& type_word, input_file& file);
/// Writes the data in memory, a row each; `strict` gives names ten columns. Warns of sets without a
/// symbol.
void write_phylip(output_file& out, bool strict, const word_writer& words);

}  // namespace zeb
