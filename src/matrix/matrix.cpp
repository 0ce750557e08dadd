// Cells, names and texts of the matrix in memory.
#include "matrix/matrix.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "base/arena.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "matrix/matrix_changes.h"
#include "matrix/symbols.h"

namespace zeb {

matrix_change_state matrix_changes;

matrix_state matrix;

namespace {

data_type type_of(int character) {
  return static_cast<data_type>(matrix.characters[at(character)].type);
}

constexpr int word_bits = 64;

std::uint64_t& word_of(int taxon, int character) {
  return matrix.gap_bits[at(taxon) * matrix.gap_words_per_row + at(character / word_bits)];
}

std::uint64_t bit_of(int character) { return std::uint64_t{1} << (character % word_bits); }

void forget_gap(int taxon, int character) {
  if (!matrix.gap_bits.empty()) word_of(taxon, character) &= ~bit_of(character);
}

}  // namespace

bool is_missing(int taxon, int character) {
  if (matrix.characters[at(character)].type == landmark_data) {
    const landmark_configuration* const found = find_configuration(matrix.landmarks, character);
    return !found || all_missing(points_of(*found, taxon));
  }
  const std::uint32_t states = cell(taxon, character);
  return states ==
         (matrix.characters[at(character)].is_continuous ? missing_continuous : matrix.state_mask);
}

silent_pattern silent_pattern_of(int character) {
  const character_record& record = matrix.characters[at(character)];
  // Both have 0 as the low half, and differ in the lowest bit of the high one.
  if (record.is_continuous) {
    return {~(missing_continuous ^ inapplicable_continuous), inapplicable_continuous};
  }
  std::uint32_t everything = star_mask(numeric_data, matrix.cell_bytes);
  if (record.type == dna_data) everything = dna_bases;
  if (record.type == protein_data) everything = all_amino_acids;
  if (record.type == numeric_data && record.top_state_used) everything = matrix.state_mask;
  // Where gaps are a state, "any base" still says that there is no gap.
  if (record.gap_is_state) everything |= everything + 1;
  return {everything, everything};
}

bool says_nothing(int character, std::uint32_t states) {
  return silent_pattern_of(character).matches(states);
}

void set_cell(int taxon, int character, std::uint32_t states) {
  forget_gap(taxon, character);
  switch (matrix.cell_bytes) {
    case 1:
      matrix.rows8[at(taxon)][at(character)] = static_cast<std::uint8_t>(states);
      break;
    case 2:
      matrix.rows16[at(taxon)][at(character)] = static_cast<std::uint16_t>(states);
      break;
    default:
      matrix.rows32[at(taxon)][at(character)] = states;
  }
}

void note_gap(int taxon, int character) {
  if (matrix.gap_bits.empty()) {
    // Rows keep this width when fewer characters turn out to have been read.
    matrix.gap_words_per_row = at((matrix.nchar - 1) / word_bits + 1);
    matrix.gap_bits =
        calloc_low<std::uint64_t>(checked_product(at(matrix.ntax), matrix.gap_words_per_row));
  }
  word_of(taxon, character) |= bit_of(character);
}

void copy_gaps(int from, int to, int first, int end) {
  for (int c = first; c < end && !matrix.gap_bits.empty(); ++c) {
    if (was_gap(from, c)) {
      note_gap(to, c);
    } else {
      forget_gap(to, c);
    }
  }
}

bool was_gap(int taxon, int character) {
  return !matrix.gap_bits.empty() && (word_of(taxon, character) & bit_of(character)) != 0;
}

continuous_cell read_continuous_cell(int taxon, int character) {
  const std::uint32_t states = cell(taxon, character);
  return {static_cast<int>(states & 0xffffU), static_cast<int>(states >> 16)};
}

double original_value(int character, int stored) {
  const auto c = at(character);
  if (c >= matrix.scales.size()) return stored / 1000.0;
  const double value = stored / 1000.0 * matrix.scales[c].factor + matrix.scales[c].shift;
  return matrix.characters[c].log_scale ? std::exp(value) : value;
}

std::string_view taxon_name(int taxon) { return matrix.taxon_names[at(taxon)]; }

std::string taxon_label(int taxon) {
  return matrix.use_taxon_names ? std::string(taxon_name(taxon)) : std::to_string(taxon);
}

void set_taxon_name(int taxon, std::string_view name) {
  const std::string whole = normal_form(name);
  const std::size_t n = text_in_bytes(whole, at(matrix.name_length) - 1).size();
  std::memcpy(matrix.taxon_names[at(taxon)], whole.data(), n);
  matrix.taxon_names[at(taxon)][n] = '\0';
}

void set_character_name(int character, matrix_state::character_name name) {
  matrix.char_names.resize(at(matrix.nchar));
  name.name = normal_form(name.name);
  for (std::string& state : name.states) state = normal_form(state);
  matrix.char_names[at(character)] = std::move(name);
}

std::string character_name(int character) {
  const auto c = at(character);
  if (c < matrix.char_names.size() && !matrix.char_names[c].name.empty()) {
    return matrix.char_names[c].name;
  }
  return "Char. " + std::to_string(character);
}

std::string character_label(int character) {
  return matrix.use_char_names ? character_name(character) : std::to_string(character);
}

std::string state_symbol(int character, int state) {
  return {symbol_of_state(type_of(character), state)};
}

int active_taxa() {
  const auto taxa = matrix.taxon_active.first(at(matrix.ntax));
  return static_cast<int>(std::count(taxa.begin(), taxa.end(), 1));
}

void drop_packed_data() {
  ++matrix_changes.count;
  unlock(&locks.search_lock);
  unlock(&locks.optimisation_lock);
}

}  // namespace zeb
