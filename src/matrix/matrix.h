// The data matrix as read: taxa by characters, with the settings of characters, taxa and blocks.
// The optimisation engine packs it into its own layout and never reads this form while searching.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "matrix/landmark_points.h"
#include "matrix/symbols.h"

namespace zeb {

/// One per character; the current settings and the default kept by `ckeep` are two arrays of it.
struct character_record {
  std::int32_t weight = 1;
  std::int32_t internal_steps = 0;   // 0 to 100; adds to homoplasy, not to length
  std::int32_t scale_low = 1000000;  // continuous: least value found, thousandths
  std::int32_t scale_high = 0;       // continuous: largest value found, thousandths
  std::uint8_t type = numeric_data;  // block type of the character
  std::uint8_t is_continuous = 0;
  std::uint8_t active = 1;
  std::uint8_t additive = 0;
  std::uint8_t is_sankoff = 0;
  std::uint8_t needs_recheck = 1;   // min_steps and max_steps are to be computed again
  std::uint8_t log_scale = 0;       // continuous: stored as logarithms
  std::uint8_t scale_changed = 0;   // continuous: the stored scale isn't the original one
  std::uint8_t gap_is_state = 0;    // DNA and proteins: "-" was read as a state
  std::uint8_t top_state_used = 0;  // numeric: the state that "*" lacks occurs (recheck_steps)
  std::int32_t block = 1;           // data block, from 1
  std::int32_t min_steps = 0;       // valid while needs_recheck is 0; thousandths if continuous
  std::int32_t max_steps = 0;
  // Union of the states of the active taxa's cells, leaving out those that say nothing ("?", "*",
  // "N" in DNA, "X" in proteins). Those cells hold more bits than this: mask them with it.
  std::uint32_t observed = 0;
  std::uint32_t root_states = 0;     // with costs: the states that the root may have; 0 any
  std::int32_t user_min_steps = -1;  // with costs: what homoplasy counts from; -1 min_steps
  std::int8_t user_max_state = -1;   // with costs: highest state that exists; -1 as observed
};

/// Least and largest number of steps that any tree can give to a character (unweighted; thousandths
/// for continuous characters).
struct step_range {
  int least = 0;
  int most = 0;
};

/// Costs of changes between states, by the state before and the state after. A change that nobody
/// gave a cost is 1.
struct cost_table {
  std::array<std::array<std::int32_t, 32>, 32> costs{};
  std::uint32_t states = 0;  // these exist even if no cell has them
  std::int32_t cut = 0;      // larger costs were made this; 0: none were
  bool operator==(const cost_table&) const = default;
};
/// Shared by the characters that it was set for, and by what `ckeep` keeps.
using shared_costs = std::shared_ptr<const cost_table>;
/// Costs under a name; null costs: not defined.
struct step_matrix {
  std::string name;
  shared_costs costs;
};
constexpr std::int32_t forbidden_cost = 32700;  // of a change that can't happen

/// Original scale of a continuous character: value = stored / 1000 * factor + shift.
struct continuous_scale {
  double factor = 1.0;
  double shift = 0.0;
  double kept_factor = 1.0;  // of before the logarithm was taken
  double kept_shift = 0.0;
};

/// A continuous character as it was before it was first rescaled. Each rescaling starts from here,
/// so that its rounding doesn't add to that of the ones before.
struct kept_values {
  std::vector<std::uint32_t> cells;  // by taxon
  double factor = 1.0;
  double shift = 0.0;
  bool logarithmic = false;
};

/// One matrix at a time; everything that grows with it lies in the arena under `matrix_lock`.
/// Written in matrix/ only.
struct matrix_state {
  bool present = false;   // data have been read
  int generation = 0;     // grows whenever data come or go
  std::string title;      // with its quotes
  std::string file_name;  // where it was read from
  int ntax = 0;           // at least 4
  int nchar = 0;
  int nnodes = 0;  // 2 * ntax - 1

  // Settings for what is read next, then fixed by `xread`.
  int cell_bytes = 2;                        // 1, 2 or 4: width of a cell
  int next_cell_bytes = 0;                   // with data in memory: what follows them; 0 the same
  std::uint32_t state_mask = 65535;          // all usable bits; also the cell of "?"
  bool gaps_are_states = false;              // `nstates gaps`
  std::uint8_t default_type = numeric_data;  // type of plain matrices, `nstates dna|prot|num`
  bool type_given = false;  // `nstates` has said the type: readers of sequences don't guess it
  bool one_scale = false;   // `nstates num N` above 10: digits may follow letters in a character
  int name_length = 32;     // bytes per taxon name, with the terminator (name_limit at reading)

  // Rows, three views of the same addresses; use the one that agrees with cell_bytes, or cell().
  std::span<std::uint8_t*> rows8;  // nnodes entries; from ntax up null
  std::span<std::uint16_t*> rows16;
  std::span<std::uint32_t*> rows32;
  int data_type_in_use = 0;  // union of data_type bits
  // A bit per cell, by taxon (see was_gap); empty: no gap was read as missing.
  std::span<std::uint64_t> gap_bits;
  std::size_t gap_words_per_row = 0;

  std::span<character_record> characters;       // nchar: current settings
  std::span<character_record> kept_characters;  // nchar: default of `ckeep`
  std::span<continuous_scale> scales;           // nchar, or empty without continuous characters

  std::span<char*> taxon_names;          // nnodes entries; from ntax up null
  std::span<std::uint8_t> taxon_active;  // nnodes; 1 active
  int outgroup = 0;
  bool use_taxon_names = false;  // `taxname =`: names rather than numbers in output

  int nblocks = 0;
  std::vector<int> block_first;  // first character of blocks 1 to nblocks, at [block]; [0] unused
  std::vector<std::string> block_names;  // [0] is "all"; empty vector: undefined

  bool use_char_names = false;  // `cnames =`
  struct character_name {
    std::string name;
    std::vector<std::string> states;
  };
  std::vector<character_name> char_names;  // empty: undefined

  std::vector<std::uint8_t> taxa_of_steps;  // active taxa that min_steps and max_steps are for

  std::vector<shared_costs> costs;         // by character, null without; empty: none has any
  std::vector<shared_costs> kept_costs;    // the same of `ckeep`
  std::vector<step_matrix> step_matrices;  // at most 32, by number

  // Settings of characters with costs.
  bool costs_allowed = true;          // `costs >`; data that were read without can't have any
  bool older_cost_format = false;     // `costs ]`: how they are saved
  bool exact_relative_fits = false;   // `costs &`: relative fits of asymmetric characters
  bool fill_polymorphic = false;      // `fillsank =`: states between those of a cell join it
  bool decompose_state_trees = true;  // `cstree +`: trees of states are optimised edge by edge

  // Groups: bit g of an element's word says whether it is in group g.
  static constexpr int group_count = 32;
  std::span<std::uint32_t> taxon_groups;      // ntax words
  std::span<std::uint32_t> character_groups;  // nchar words
  std::uint32_t defined_taxon_groups = 0;     // bit per group
  std::uint32_t defined_character_groups = 0;
  std::vector<std::string> taxon_group_names;  // group_count of "Group_%i"
  std::vector<std::string> character_group_names;

  bool exact_min_steps = true;       // `nstates xmin`
  bool show_original_scale = false;  // `nstates [`: continuous values in their original scale
  std::uint8_t state_entry_type = numeric_data;   // `nstates /`: how commands read states
  std::map<int, kept_values> values_as_read;      // of continuous characters rescaled since
  std::vector<landmark_configuration> landmarks;  // by character; empty without any
};
extern matrix_state matrix;

/// The states of a cell, as a bit mask; `state_mask` when missing. Continuous: low half minimum,
/// high half maximum, in thousandths; see continuous_cell.
inline std::uint32_t cell(int taxon, int character) {
  const auto t = static_cast<std::size_t>(taxon);
  const auto c = static_cast<std::size_t>(character);
  switch (matrix.cell_bytes) {
    case 1:
      return matrix.rows8[t][c];
    case 2:
      return matrix.rows16[t][c];
    default:
      return matrix.rows32[t][c];
  }
}
/// Is the cell missing ("?")? For continuous characters, minimum 0 and maximum 65,535.
bool is_missing(int taxon, int character);
void set_cell(int taxon, int character, std::uint32_t states);

/// Was the cell a gap ("-") in what was read, although gaps are missing entries? The states of the
/// cell don't tell. Readers note it after storing the cell, before `finish_matrix`; writers write
/// "-" for it. `set_cell` takes the note away. Gaps that are read as a state aren't noted.
bool was_gap(int taxon, int character);
/// The first one takes memory, one bit for each cell of the matrix.
void note_gap(int taxon, int character);
/// The notes of the cells `first` to `end` - 1 of a row that holds the same cells as another one.
void copy_gaps(int from, int to, int first, int end);

struct continuous_cell {
  int low = 0;   // thousandths
  int high = 0;  // thousandths; 65,535 with low 0 is missing, 65,534 inapplicable
};
continuous_cell read_continuous_cell(int taxon, int character);

/// A stored value (thousandths) in the units that the character was read in.
double original_value(int character, int stored);
/// Name of the taxon, and what output shows for it: the name under `taxname =`, else the number.
std::string_view taxon_name(int taxon);
std::string taxon_label(int taxon);
/// Name of a character or "Char. N"; what output shows for it under `cnames =` or `-`.
std::string character_name(int character);
std::string character_label(int character);
/// Symbol of a state of the character as the matrix writes it.
std::string state_symbol(int character, int state);

/// Cuts the name to what fits.
void set_taxon_name(int taxon, std::string_view name);
/// Names a character and its states.
void set_character_name(int character, matrix_state::character_name name);

int active_taxa();

/// Does a cell with these states say nothing about the character: "?", "*", "N" in DNA, "X" in
/// proteins, missing or inapplicable continuous values.
bool says_nothing(int character, std::uint32_t states);
/// The same for many cells of a character: those that match say nothing.
struct silent_pattern {
  std::uint32_t mask = 0;
  std::uint32_t silent = 0;
  bool matches(std::uint32_t states) const { return (states & mask) == silent; }
};
silent_pattern silent_pattern_of(int character);

/// Called by every change of a setting that the packed data depend on: releases the search and
/// optimisation locks, so that the next search packs anew.
void drop_packed_data();
}  // namespace zeb
