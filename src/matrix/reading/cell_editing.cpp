#include "matrix/reading/cell_editing.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/number_text.h"
#include "base/random.h"
#include "matrix/matrix.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

std::uint32_t read_thousandths(int character, std::string_view text) {
  const double value = real_of(text).value_or(-1);
  if (!(value >= 0) || value > 65) {
    error_end("Continuous character", character, "takes values from 0 to 65; found", text);
  }
  return static_cast<std::uint32_t>(std::lround(value * 1000.0));
}

std::uint32_t continuous_cell_from_text(int character, std::string_view text) {
  if (text == "?") return missing_continuous;
  if (text == "*") return inapplicable_continuous;
  const std::size_t dash = text.find('-', 1);
  std::uint32_t low = read_thousandths(character, text.substr(0, dash));
  std::uint32_t high =
      dash == std::string_view::npos ? low : read_thousandths(character, text.substr(dash + 1));
  if (low > high) std::swap(low, high);
  return low | (high << 16);
}

bool drawn(double probability) {
  return draw() < probability * (static_cast<double>(random_generator::largest) + 1);
}

}  // namespace

std::uint32_t cell_from_text(int character, std::string_view text) {
  const character_record& record = matrix.characters[at(character)];
  if (record.type == landmark_data) error_end("Cannot edit landmark character", character);
  if (record.is_continuous) return continuous_cell_from_text(character, text);
  const symbol_table table = make_symbols(static_cast<data_type>(record.type), matrix.cell_bytes,
                                          record.gap_is_state != 0);
  std::uint32_t states = 0;
  for (const char c : text) {
    if (c == '[' || c == ']' || c == '(' || c == ')') continue;
    const std::uint32_t s = table[static_cast<unsigned char>(c)];
    if (!s) error_end_f("Found alien symbol for char. %i: '%c'", character, c);
    states |= s;
  }
  if (!states) error_end("Must give states for character", character);
  return states;
}

void set_cells(std::span<const std::uint8_t> characters, std::span<const std::uint8_t> taxa,
               std::string_view states, bool recheck) {
  // All characters are looked at first: an edit that fails changes nothing.
  std::vector<std::uint32_t> values(at(matrix.nchar));
  for (int c = 0; c < matrix.nchar; ++c) {
    if (characters[at(c)]) values[at(c)] = cell_from_text(c, states);
  }
  drop_packed_data();
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!characters[at(c)]) continue;
    for (int t = 0; t < matrix.ntax; ++t) {
      if (taxa[at(t)]) set_cell(t, c, values[at(c)]);
    }
    if (recheck) matrix.characters[at(c)].needs_recheck = 1;
  }
}

int blank_cells_at_random(double character_probability, double taxon_probability) {
  int blanked = 0;
  drop_packed_data();
  for (int c = 0; c < matrix.nchar; ++c) {
    character_record& record = matrix.characters[at(c)];
    if (record.type == landmark_data || !drawn(character_probability)) continue;
    for (int t = 0; t < matrix.ntax; ++t) {
      if (!drawn(taxon_probability)) continue;
      blanked += !is_missing(t, c);
      set_cell(t, c, record.is_continuous ? missing_continuous : matrix.state_mask);
    }
    record.needs_recheck = 1;
  }
  return blanked;
}

void permute_cells(int character, std::span<std::uint32_t> cells,
                   std::span<const std::uint8_t> taxa, bool with_missing, std::span<int> scratch) {
  const bool continuous = matrix.characters[at(character)].is_continuous;
  const std::uint32_t missing = continuous ? missing_continuous : matrix.state_mask;
  std::size_t movable = 0;
  for (std::size_t t = 0; t < cells.size(); ++t) {
    if (taxa[t] && (with_missing || cells[t] != missing)) scratch[movable++] = static_cast<int>(t);
  }
  for (std::size_t left = movable; left > 1; --left) {
    const auto other = static_cast<std::size_t>(draw()) % left;
    std::swap(cells[at(scratch[left - 1])], cells[at(scratch[other])]);
  }
}

}  // namespace zeb
