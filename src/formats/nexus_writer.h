// NEXUS, FASTA and Newick texts of the data and trees in memory.
#pragma once

#include <cstdio>
#include <string>

#include "matrix/matrix.h"

namespace zeb {

/// How the cells of a matrix are written.
struct cell_style {
  bool as_dna = false;       // all characters, by the first four states
  bool as_standard = false;  // all characters as numbered states
};

/// "#NEXUS" and the data block.
void write_nexus_data(std::FILE* out, const cell_style& style);
/// Types, weights, inactive characters and taxa, gap mode. Nothing where all is default.
void write_nexus_assumptions(std::FILE* out);
/// All trees in memory, as a trees block.
void write_nexus_trees(std::FILE* out);
/// What the tags of the tag tree are in a tree statement.
enum class tag_use { labels, lengths };
/// The tag tree as a tree statement, with its tags.
void write_nexus_tag_tree(std::FILE* out, tag_use use);
/// One tree a line.
void write_newick_trees(std::FILE* out);
/// `skip_gaps` leaves out "-".
void write_fasta(std::FILE* out, bool skip_gaps);

/// Largest number of states of any discrete character (highest state plus one).
int most_states();

}  // namespace zeb
