#include "matrix/settings/data_conversion.h"

#include <array>
#include <bit>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

void refuse_continuous() {
  if (matrix.data_type_in_use & (continuous_data | landmark_data)) {
    error_end("Cannot convert continuous/landmark characters into discrete");
  }
}

// Union of the states of all taxa's cells that say something.
std::uint32_t states_in_cells(int character) {
  std::uint32_t states = 0;
  for (int t = 0; t < matrix.ntax; ++t) {
    const std::uint32_t c = cell(t, character);
    if (!says_nothing(character, c)) states |= c;
  }
  return states;
}

void change_type(int character, data_type type, bool gap_is_state) {
  for (auto records : {matrix.characters, matrix.kept_characters}) {
    records[at(character)].type = type;
    records[at(character)].gap_is_state = gap_is_state;
  }
  matrix.characters[at(character)].needs_recheck = 1;
}

void blank_silent_cells(int character) {
  for (int t = 0; t < matrix.ntax; ++t) {
    if (says_nothing(character, cell(t, character))) set_cell(t, character, matrix.state_mask);
  }
}

// State names follow the states to their new numbers.
void move_state_names(int character, const std::array<int, 32>& new_state) {
  if (at(character) >= matrix.char_names.size()) return;
  std::vector<std::string>& names = matrix.char_names[at(character)].states;
  std::vector<std::string> moved;
  for (std::size_t s = 0; s < names.size() && s < 32; ++s) {
    if (new_state[s] < 0) continue;
    if (moved.size() <= at(new_state[s])) moved.resize(at(new_state[s]) + 1);
    moved[at(new_state[s])] = names[s];
  }
  names = moved;
}

bool renumber(int character) {
  const std::uint32_t states = states_in_cells(character);
  if ((states & (states + 1)) == 0) return false;  // no holes
  std::array<int, 32> new_state;
  new_state.fill(-1);
  int count = 0;
  for (std::uint32_t rest = states; rest; rest &= rest - 1) {
    new_state[at(std::countr_zero(rest))] = count++;
  }
  for (int t = 0; t < matrix.ntax; ++t) {
    const std::uint32_t old = cell(t, character);
    if (says_nothing(character, old)) continue;
    std::uint32_t renumbered = 0;
    for (std::uint32_t rest = old; rest; rest &= rest - 1) {
      renumbered |= 1U << new_state[at(std::countr_zero(rest))];
    }
    set_cell(t, character, renumbered);
  }
  move_state_names(character, new_state);
  matrix.characters[at(character)].needs_recheck = 1;
  return true;
}

}  // namespace

void make_gaps_states_of_sequences() {
  drop_packed_data();
  for (int c = 0; c < matrix.nchar; ++c) {
    const auto type = static_cast<data_type>(matrix.characters[at(c)].type);
    if (type == dna_data || type == protein_data) change_type(c, type, true);
  }
}

void convert_to_numeric() {
  refuse_continuous();
  for (int c = 0; c < matrix.nchar; ++c) {
    blank_silent_cells(c);
    change_type(c, numeric_data, false);
  }
  matrix.data_type_in_use = numeric_data;
  drop_packed_data();
}

void convert_to_dna(bool gaps_are_states) {
  refuse_continuous();
  const int most = gaps_are_states ? 5 : 4;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (matrix.characters[at(c)].type == dna_data) continue;
    const int states = 32 - std::countl_zero(states_in_cells(c));
    if (states > most) {
      error_end_f("Cannot convert data with %i states (e.g. char. %i) into \"DNA\"", states, c);
    }
  }
  for (int c = 0; c < matrix.nchar; ++c) {
    if (matrix.characters[at(c)].type == dna_data) continue;
    blank_silent_cells(c);
    change_type(c, dna_data, gaps_are_states);
  }
  matrix.data_type_in_use = dna_data;
  drop_packed_data();
}

int renumber_states() {
  int changed = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    if (record.type != numeric_data || record.additive || record.is_sankoff) continue;
    changed += renumber(c);
  }
  if (changed) drop_packed_data();
  return changed;
}

}  // namespace zeb
