// Reading and writing of foreign formats.
#pragma once

#include <string>

namespace zeb {

/// Aligned sequences: ">name" lines and sequences on any number of lines. The option is reserved.
void read_fasta_file(int option, const std::string& file);
/// PHYLIP matrices, sequential or interleaved, strict (names of ten characters) or relaxed (names
/// up to a blank).
void read_phylip_file(const std::string& file);
void read_newick_file(const std::string& file);

void export_command();

/// Hands `procedure` its readers. Called once, at start-up.
void register_formats();

}  // namespace zeb
