// The matrix: dimensions, characters, taxa, cells.
#include <algorithm>
#include <bit>
#include <cstdlib>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "language/interpreter.h"
#include "matrix/character_steps.h"
#include "matrix/costs/character_costs.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/matrix.h"
#include "taxonomy/taxonomy.h"

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
double last_taxonomic_group() {
  require_data("using data in expressions");
  return taxonomy_in_use() ? static_cast<double>(read_taxonomy().groups.size()) - 1 : -1;
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
double is_sankoff() {
  const int character = one_character();
  if (!record(character).is_sankoff) return 0;
  if (costs_of_character(character).asymmetric) return 2;
  return record(character).root_states ? 3 : 1;
}
bool has_categories(int character) {
  return !record(character).is_continuous && record(character).type != landmark_data;
}

// Without costs, a change costs a step, and in an additive character one for each state
// on the way.
double cost_of_change() {
  open_brackets();
  const int character = character_argument();
  const int from = whole_argument();
  const int to = whole_argument();
  close_brackets();
  if (!has_categories(character)) error_end("Costs are those of discrete characters");
  if (from < 0 || from > 31) error_end("No state", from);
  if (to < 0 || to > 31) error_end("No state", to);
  if (record(character).is_sankoff) {
    const shared_costs costs = costs_set_for(character);
    return costs ? costs->costs[at(from)][at(to)] : from != to;
  }
  return record(character).additive ? std::abs(from - to) : from != to;
}
double has_ancestral_states() { return record(one_character()).root_states != 0; }
double is_categorical() { return has_categories(one_character()); }
double last_landmark_character() {
  require_data("using data in expressions");
  int count = 0;
  for (const character_record& c : matrix.characters) count += c.type == landmark_data;
  return count - 1;
}
double weight() { return record(one_character()).weight; }
double informative() { return is_informative(one_character()); }

length_range steps_over_all() {
  const std::vector<std::uint8_t> all(static_cast<std::size_t>(matrix.ntax), 1);
  return lengths_over_taxa(one_character(), all);
}

double least_steps() { return steps_over_all().least; }
double most_steps() { return steps_over_all().most; }
double least_steps_of_active() { return lengths_over_active_taxa(one_character()).least; }
double most_steps_of_active() { return lengths_over_active_taxa(one_character()).most; }

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

// clang-format off
constexpr expression_function rows[] = {
    {"ntax", "", "number of the last taxon", last_taxon},
    {"nchar", "", "number of the last character", last_character},
    {"nblocks", "", "number of the last data block", last_block},
    {"isact", "[C]", "1 if character C is active", is_active_character},
    {"isactax", "[T]", "1 if taxon T is active", is_active_taxon},
    {"isadd", "[C]", "1 if character C is additive", is_additive},
    {"issank", "[C]", "1 symmetric, 2 asymmetric, 3 symmetric with ancestral states; else 0", is_sankoff, function_list::general, "isadd"},
    {"iscont", "[C]", "1 if character C is continuous", is_continuous},
    {"islmark", "[C]", "1 if character C is a landmark configuration", is_landmark},
    {"lmnchar", "", "number of landmark characters less one; -1 without any", last_landmark_character},
    {"cost", "[C S1 S2]", "cost of the change S1 to S2 in character C", cost_of_change},
    {"isanc", "[C]", "1 if ancestral states are defined for character C", has_ancestral_states},
    {"iscateg", "[C]", "1 if character C has discrete states (is neither continuous nor a landmark)", is_categorical},
    {"numcategs", "", "number of the last group of the taxonomy; -1 without one", last_taxonomic_group, function_list::general, "numclads"},
    {"isinfo", "[C]", "1 if character C is informative", informative},
    {"isdup", "[T]", "1 if taxon T repeats the data of an earlier one", repeats_data},
    {"weight", "[C]", "weight of character C", weight},
    {"minsteps", "[C]", "minimum steps of character C over all taxa; minstepsact[C] over the active ones", least_steps},
    {"maxsteps", "[C]", "maximum steps of character C over all taxa; maxstepsact[C] over the active ones", most_steps},
    {"minstepsact", "[C]", "minimum steps of character C over the active taxa", least_steps_of_active, function_list::unlisted},
    {"maxstepsact", "[C]", "maximum steps of character C over the active taxa", most_steps_of_active, function_list::unlisted},
    {"maxstate", "[C]", "highest state of character C", highest_state},
    {"nstates", "[C]", "number of states observed in character C", state_count},
    {"missing", "[C T]", "1 if character C is missing in taxon T", missing_cell},
    {"nummissing", "[C]", "missing entries of character C", missing_cells},
    {"contmin", "[C T]", "minimum of continuous character C in taxon T", continuous_low, function_list::unlisted},
    {"contmax", "[C T]", "maximum of continuous character C in taxon T", continuous_high, function_list::unlisted},
    {"contmins", "[C T]", "minimum of continuous character C in taxon T, stored scale", continuous_stored_low, function_list::general, "contscale"},
    {"contmaxs", "[C T]", "maximum of continuous character C in taxon T, stored scale", continuous_stored_high, function_list::general, "contmins"},
    {"contscale", "[C]", "factor between original and stored scale of continuous character C", continuous_factor, function_list::general, "cost"},
};
// clang-format on

}  // namespace

const std::span<const expression_function> data_functions = rows;

}  // namespace zeb
