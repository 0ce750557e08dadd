// FASTA files: ">name" lines, each followed by a sequence on any number of lines.
#pragma once

#include <string>

#include "base/input_file.h"
#include "base/output_file.h"
#include "formats/written_words.h"

namespace zeb {

/// Reads aligned sequences of the type named, or of the one that fits where the word is empty.
void read_fasta_file(const std::string& type_word, input_file& file);
/// Writes the data in memory. `skip_gaps` leaves out "-". Warns of sets without a symbol.
void write_fasta(output_file& out, bool skip_gaps, const word_writer& words);

}  // namespace zeb
