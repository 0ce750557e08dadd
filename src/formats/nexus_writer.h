// The data in memory as NEXUS and FASTA.
#pragma once

#include <cstdio>
#include <string>

#include "matrix/matrix.h"

namespace zeb {

/// How the cells of a matrix are written.
struct cell_style {
  bool as_dna = false;       // all characters, by the first four states
  bool as_standard = false;  // all characters as numbered states
  bool plain = false;        // NEXUS without abbreviations, for programs that read little of it
};

/// "#NEXUS" and the data block.
void write_nexus_data(std::FILE* out, const cell_style& style);
/// Types, weights, inactive characters and taxa, gap mode. Nothing where all is default.
void write_nexus_assumptions(std::FILE* out, bool plain);
/// `skip_gaps` leaves out "-".
void write_fasta(std::FILE* out, bool skip_gaps);

constexpr int all_data = numeric_data | dna_data | protein_data;
/// Highest state plus one of the discrete characters of these types (`data_type` flags).
int most_states(int types);

}  // namespace zeb
