// What the data hold, and what of it will spoil a search.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zeb {

/// Counts over the active taxa and characters. A cell is missing if it says nothing about its
/// character: "?", "*", "N" in DNA, "X" in proteins, gaps that aren't states.
struct data_summary {
  std::int64_t missing_cells = 0;
  std::vector<int> missing_of_taxon;        // by taxon
  std::vector<int> empty_taxa;              // without a cell that says something
  std::vector<int> empty_characters;        // the same
  std::vector<std::vector<int>> same_rows;  // taxa with the same cells, but for empty taxa
};

/// One pass over the rows. Long data can be interrupted.
data_summary summarise_data();

/// The first few, by name: "a, b, c and 5 others".
std::string some_taxa(const std::vector<int>& taxa, const char* separator = ", ");
/// The same of the taxa with the same cells: "a = b, c = d = e and 2 others".
std::string some_same_rows(const data_summary& summary);

/// A line "Note: ..." on empty taxa and characters, taxa with the same data, and data without an
/// informative character; none where all is well.
void note_what_spoils_searches();

}  // namespace zeb
