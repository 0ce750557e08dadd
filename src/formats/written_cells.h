// Cells of the matrix as foreign formats have them.
#pragma once

#include <string>

#include "matrix/matrix.h"

namespace zeb {

/// How data are written.
struct writing_style {
  bool as_dna = false;           // all characters, by the first four states
  bool as_standard = false;      // all characters as numbered states
  bool plain = false;            // NEXUS without abbreviations, for programs that read little of it
  bool step_matrices = false;    // those in use as well
  bool gaps_are_states = false;  // "-" is a state, whatever the character
};

/// Is a gap a state in some character?
bool some_gap_is_state();
/// The type that the character is written as.
data_type written_type(int character, const writing_style& style);
/// A cell as NEXUS has it: a symbol, a set in braces, a value or a range of values.
std::string cell_symbols(int taxon, int character, const writing_style& style);
/// Rows for formats with one symbol a cell: a set of states without a symbol of its own is "?".
class symbol_rows {
 public:
  explicit symbol_rows(const char* format) : format_(format) {}
  std::string row(int taxon);
  /// Warns of such sets.
  void tell_lost() const;

 private:
  const char* format_;
  int lost_ = 0;
  std::string first_place_;
};

/// Warns of continuous characters that NEXUS readers get differently.
void warn_of_continuous();

constexpr int all_data = numeric_data | dna_data | protein_data;
/// Highest state plus one of the discrete characters of these types (`data_type` flags).
int most_states(int types);

}  // namespace zeb
