// FASTA files: ">name" lines, each followed by a sequence on any number of lines.
#pragma once

#include <cstdio>
#include <string>

namespace zeb {

/// Reads aligned sequences as DNA. The option is reserved.
void read_fasta_file(int option, const std::string& file);
/// Writes the data in memory. `skip_gaps` leaves out "-". Warns of sets without a symbol.
void write_fasta(std::FILE* out, bool skip_gaps);

}  // namespace zeb
