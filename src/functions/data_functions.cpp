// The matrix: dimensions, characters, taxa, cells, blocks.
#include <algorithm>
#include <bit>
#include <vector>

#include "functions/arguments.h"
#include "functions/function_table.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "matrix/matrix.h"
#include "matrix/symbols.h"
#include "shell/errors.h"
#include "shell/interpreter.h"
#include "shell/lexer.h"

namespace zeb {
namespace {

const character_record& record(int character) {
  return matrix.characters[static_cast<std::size_t>(character)];
}

// A function of one character in brackets.
int one_character() {
  open_brackets();
  const int character = character_argument();
  close_brackets();
  return character;
}

int one_taxon() {
  open_brackets();
  const int taxon = taxon_argument();
  close_brackets();
  return taxon;
}

double last_taxon() {
  require_data("using data in expressions");
  return matrix.ntax - 1;
}
double last_character() {
  require_data("using data in expressions");
  return matrix.nchar - 1;
}
double last_block() {
  require_data("using data in expressions");
  return matrix.nblocks;
}
double is_active_character() { return record(one_character()).active; }
double is_active_taxon() { return matrix.taxon_active[static_cast<std::size_t>(one_taxon())]; }
double is_additive() { return record(one_character()).additive; }
double is_continuous() { return record(one_character()).is_continuous; }
double is_landmark() { return record(one_character()).type == landmark_data; }
// Costs aren't built: no character has a table, symmetric or not.
double is_sankoff() { return record(one_character()).is_sankoff; }
// Allowed states of the root come with the costs: no character has them.
double has_ancestral_states() {
  one_character();
  return 0;
}
bool has_categories(int character) {
  return !record(character).is_continuous && record(character).type != landmark_data;
}
double is_categorical() { return has_categories(one_character()); }
double last_landmark_character() {
  require_data("using data in expressions");
  int count = 0;
  for (const character_record& c : matrix.characters) count += c.type == landmark_data;
  return count - 1;
}
// The error margin of landmark searches, which aren't there yet.
double landmark_error() {
  if (brackets_follow()) {
    const double which = bracketed_values(1, 1)[0];
    if (!(which >= 0 && which < 5)) error_end("Landmark error margin is 0-4");
  }
  error_end("Expression \"lmerror\" is not available yet");
}
double weight() { return record(one_character()).weight; }
double informative() { return is_informative(one_character()); }

double steps(int character, int value) {
  return record(character).is_continuous ? value / 1000.0 : value;
}

step_range steps_over_all(int character) {
  const std::vector<std::uint8_t> all(static_cast<std::size_t>(matrix.ntax), 1);
  return steps_over_taxa(character, all);
}

double least_steps() {
  const int c = one_character();
  return steps(c, steps_over_all(c).least);
}
double most_steps() {
  const int c = one_character();
  return steps(c, steps_over_all(c).most);
}
double least_steps_of_active() {
  const int c = one_character();
  return steps(c, minimum_steps(c));
}
double most_steps_of_active() {
  const int c = one_character();
  return steps(c, maximum_steps(c));
}

std::uint32_t observed_states(int character) {
  recheck_steps();
  return record(character).observed;
}

double highest_state() {
  const int c = one_character();
  if (record(c).is_continuous) error_end("Expression \"maxstate\" is for discrete characters");
  const std::uint32_t states = observed_states(c);
  return states ? 31 - std::countl_zero(states) : -1;
}

double state_count() {
  const int c = one_character();
  return record(c).is_continuous ? 0 : std::popcount(observed_states(c));
}

double missing_cell() {
  open_brackets();
  const int character = character_argument();
  const int taxon = taxon_argument();
  close_brackets();
  return is_missing(taxon, character);
}

double missing_cells() {
  const int c = one_character();
  int count = 0;
  for (int t = 0; t < matrix.ntax; ++t) count += is_missing(t, c);
  return count;
}

// Does the taxon repeat the cells of an earlier one?
double repeats_data() {
  const int taxon = one_taxon();
  for (int other = 0; other < taxon; ++other) {
    bool same = true;
    for (int c = 0; c < matrix.nchar && same; ++c) same = cell(taxon, c) == cell(other, c);
    if (same) return 1;
  }
  return 0;
}

continuous_cell continuous_argument(int* character) {
  open_brackets();
  *character = character_argument();
  const int taxon = taxon_argument();
  close_brackets();
  if (!record(*character).is_continuous) error_end("Character", *character, "is not continuous");
  return read_continuous_cell(taxon, *character);
}

double continuous_low() {
  int c = 0;
  const continuous_cell value = continuous_argument(&c);
  return original_value(c, value.low);
}
double continuous_high() {
  int c = 0;
  const continuous_cell value = continuous_argument(&c);
  return original_value(c, value.high);
}
double continuous_stored_low() {
  int c = 0;
  return continuous_argument(&c).low / 1000.0;
}
double continuous_stored_high() {
  int c = 0;
  return continuous_argument(&c).high / 1000.0;
}
double continuous_factor() {
  const int c = one_character();
  if (!record(c).is_continuous) error_end("Character", c, "is not continuous");
  return matrix.scales.empty() ? 1 : matrix.scales[static_cast<std::size_t>(c)].factor;
}

int block_argument() {
  require_data("using data in expressions");
  const int block = whole_argument();
  if (block < 0 || block > matrix.nblocks) error_end("Only valid blocks are 0 -", matrix.nblocks);
  return block;
}

int block_start(int block) {
  return block == 0 || matrix.nblocks < 2 ? 0 : matrix.block_first[static_cast<std::size_t>(block)];
}
int block_end(int block) {
  if (block == 0 || block >= matrix.nblocks) return matrix.nchar - 1;
  return matrix.block_first[static_cast<std::size_t>(block) + 1] - 1;
}

double first_of_block() {
  open_brackets();
  const int block = block_argument();
  close_brackets();
  return block_start(block);
}
double last_of_block() {
  open_brackets();
  const int block = block_argument();
  close_brackets();
  return block_end(block);
}

double blocks_of_characters() {
  open_brackets();
  std::vector<double> blocks;
  while (skip_blanks_peek() != ']') {
    const int block = record(character_argument()).block;
    if (std::find(blocks.begin(), blocks.end(), block) == blocks.end()) blocks.push_back(block);
  }
  close_brackets();
  return write_list("Blocklist possibly", blocks);
}

double taxon_in_block() {
  open_brackets();
  const int taxon = taxon_argument();
  const int block = block_argument();
  close_brackets();
  for (int c = block_start(block); c <= block_end(block); ++c) {
    if (!is_missing(taxon, c)) return 1;
  }
  return 0;
}

// First and last position of a taxon's sequence in a block: where its cells aren't missing.
double sequence_end(bool first) {
  open_brackets();
  const int taxon = taxon_argument();
  const int block = block_argument();
  close_brackets();
  const int from = block_start(block);
  const int to = block_end(block);
  for (int i = 0; i <= to - from; ++i) {
    const int c = first ? from + i : to - i;
    if (!is_missing(taxon, c)) return c;
  }
  return -1;
}
double sequence_start() { return sequence_end(true); }
double sequence_last() { return sequence_end(false); }

// ---- edit cost ----

struct edit_costs {
  double substitution = 1;
  double gap_opening = 1;
  double gap_extension = 1;
  bool gaps_only = false;
};

edit_costs read_edit_costs() {
  edit_costs costs;
  for (double* cost : {&costs.substitution, &costs.gap_opening, &costs.gap_extension}) {
    const int next = skip_blanks_peek();
    if (next == ']' || next == 'G' || next == 'g') break;
    *cost = macro_value();
    if (*cost < 0) error_end("Costs of editing can't be negative");
  }
  costs.gaps_only = accept_char('G') || accept_char('g');
  return costs;
}

bool is_gap(int taxon, int character) {
  const character_record& r = record(character);
  if (!r.gap_is_state) return false;
  const int state = r.type == dna_data ? dna_gap_state : protein_gap_state;
  return cell(taxon, character) == 1U << state;
}

// The cost of turning one taxon's row into the other's, as they are aligned: positions in which
// both have gaps, or one is missing, don't count; a run of gaps of one taxon against residues of
// the other is opened once and extended from there.
double edit_cost() {
  open_brackets();
  const int a = taxon_argument();
  const int b = taxon_argument();
  const edit_costs costs = read_edit_costs();
  close_brackets();
  double sum = 0;
  int gap_of = -1;  // the taxon in whose gap the last counted position lies
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!record(c).active || !has_categories(c) || is_missing(a, c) || is_missing(b, c)) continue;
    const bool gap_a = is_gap(a, c);
    const bool gap_b = is_gap(b, c);
    if (gap_a && gap_b) continue;
    if (gap_a || gap_b) {
      const int gapped = gap_a ? a : b;
      sum += gapped == gap_of ? costs.gap_extension : costs.gap_opening;
      gap_of = gapped;
      continue;
    }
    gap_of = -1;
    if (!costs.gaps_only && !(cell(a, c) & cell(b, c))) sum += costs.substitution;
  }
  return sum;
}

constexpr function_row rows[] = {
    {"ntax", last_taxon},
    {"nchar", last_character},
    {"nblocks", last_block},
    {"isact", is_active_character},
    {"isactax", is_active_taxon},
    {"isadd", is_additive},
    {"issank", is_sankoff},
    {"iscont", is_continuous},
    {"islmark", is_landmark},
    {"lmnchar", last_landmark_character},
    {"lmerror", landmark_error},
    {"isanc", has_ancestral_states},
    {"iscateg", is_categorical},
    {"isinfo", informative},
    {"isdup", repeats_data},
    {"editcost", edit_cost},
    {"weight", weight},
    {"minsteps", least_steps},
    {"maxsteps", most_steps},
    {"minstepsact", least_steps_of_active},
    {"maxstepsact", most_steps_of_active},
    {"maxstate", highest_state},
    {"nstates", state_count},
    {"missing", missing_cell},
    {"nummissing", missing_cells},
    {"contmin", continuous_low},
    {"contmax", continuous_high},
    {"contmins", continuous_stored_low},
    {"contmaxs", continuous_stored_high},
    {"contscale", continuous_factor},
    {"blockstart", first_of_block},
    {"blockend", last_of_block},
    {"blocklist", blocks_of_characters},
    {"taxinblock", taxon_in_block},
    {"seqstart", sequence_start},
    {"seqend", sequence_last},
};

}  // namespace

std::span<const function_row> data_functions() { return rows; }

}  // namespace zeb
