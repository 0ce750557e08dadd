#include "formats/written_cells.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "language/list_text.h"
#include "matrix/reading/continuous_reader.h"
#include "matrix/reading/matrix_writer.h"
#include "matrix/symbols.h"

namespace zeb {

namespace {

// "0.5", or "0.5-0.75" for a range.
std::string value_text(int character, const continuous_cell& value) {
  const std::string low = exact_text(original_value(character, value.low));
  return value.low == value.high ? low
                                 : low + "-" + exact_text(original_value(character, value.high));
}

enum class reading_back { exact, with_other_scale, refused };

// What reading the original values gives, compared with the cells and the scale in memory.
reading_back how_it_reads_back(int character) {
  double least = HUGE_VAL;
  double largest = 0;
  for (int t = 0; t < matrix.ntax; ++t) {
    if (says_nothing(character, cell(t, character))) continue;
    const continuous_cell value = read_continuous_cell(t, character);
    least = std::min(least, original_value(character, value.low));
    largest = std::max(largest, original_value(character, value.high));
  }
  if (least > largest) return reading_back::exact;
  if (least < 0) return reading_back::refused;
  const continuous_scale& scale = matrix.scales[at(character)];
  const continuous_scale read = scale_of_reading(least, largest);
  const bool same = read.shift == scale.shift &&
                    std::abs(read.factor - scale.factor) < 1e-9 * scale.factor &&
                    !matrix.characters[at(character)].log_scale;
  return same ? reading_back::exact : reading_back::with_other_scale;
}

// Characters that read back in this way: "0 3.5"; empty for none.
std::string characters_reading_back(reading_back way) {
  const std::vector<std::string> items = list_items(matrix.nchar, [way](int c) {
    return matrix.characters[at(c)].is_continuous && how_it_reads_back(c) == way;
  });
  return items.empty() ? std::string() : wrapped_words(items, 60).substr(1);
}

}  // namespace

bool some_gap_is_state() {
  return std::any_of(matrix.characters.begin(), matrix.characters.end(),
                     [](const character_record& r) { return r.gap_is_state != 0; });
}

data_type written_type(int character, const writing_style& style) {
  const auto type = static_cast<data_type>(matrix.characters[at(character)].type);
  if (type == continuous_data) return type;
  return style.as_dna ? dna_data : style.as_standard ? numeric_data : type;
}

std::string cell_symbols(int taxon, int character, const writing_style& style) {
  const std::uint32_t states = cell(taxon, character);
  const data_type type = written_type(character, style);
  // Gaps that are noted say nothing; those that are states lie in the cell.
  if (was_gap(taxon, character)) return style.gaps_are_states ? "?" : "-";
  if (is_missing(taxon, character)) return "?";
  if (type == continuous_data) {
    return says_nothing(character, states)
               ? "*"
               : value_text(character, read_continuous_cell(taxon, character));
  }
  // "Any state" of one type has states that another one lacks.
  const bool other_type = type != matrix.characters[at(character)].type;
  if (other_type && says_nothing(character, states)) return "?";
  const char one = symbol_of_set(type, matrix.cell_bytes, states);
  if (one) return {one};
  std::string set = "{";
  for (std::uint32_t rest = states; rest; rest &= rest - 1) {
    set += symbol_of_state(type, std::countr_zero(rest));
  }
  return set + "}";
}

std::string symbol_rows::row(int taxon) {
  std::string row;
  for (int c = 0; c < matrix.nchar; ++c) {
    const std::string symbols = cell_symbols(taxon, c, {});
    if (symbols.size() > 1 && lost_++ == 0)
      first_place_ = std::string(taxon_name(taxon)) + ", char. " + std::to_string(c);
    row += symbols.size() > 1 ? "?" : symbols;
  }
  return row;
}

void symbol_rows::tell_lost() const {
  if (lost_ == 0) return;
  warning(format_, "has no symbol for sets of states:",
          counted(lost_, "cell is written as \"?\", that of taxon",
                  "cells are written as \"?\", the first that of taxon"),
          first_place_);
}

void warn_of_continuous() {
  const std::string rescaled = characters_reading_back(reading_back::with_other_scale);
  if (!rescaled.empty()) {
    warning("NEXUS has no place for the scale that continuous characters were given; read back,",
            "these have the scale of their values:", rescaled);
  }
  const std::string negative = characters_reading_back(reading_back::refused);
  if (!negative.empty()) {
    warning("Values below 0 are saved, but can't be read back, those of continuous characters",
            negative);
  }
  int odd_cells = 0;
  std::string first_place;
  for (int t = 0; t < matrix.ntax; ++t) {
    for (int c = 0; c < matrix.nchar && matrix.characters[at(c)].is_continuous; ++c) {
      const continuous_cell value = read_continuous_cell(t, c);
      if (is_missing(t, c) || value.low == value.high) continue;
      if (odd_cells++ == 0)
        first_place = std::string(taxon_name(t)) + ", char. " + std::to_string(c);
    }
  }
  if (odd_cells == 0) return;
  warning("Other programs may not read ranges and inapplicable values of continuous characters:",
          counted(odd_cells, "cell, that of taxon", "cells, the first that of taxon"), first_place);
}

int most_states(int types) {
  int most = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    if (record.is_continuous || !(record.type & types)) continue;
    for (int t = 0; t < matrix.ntax; ++t) {
      const std::uint32_t states = cell(t, c);
      if (!says_nothing(c, states) && states) most = std::max(most, 32 - std::countl_zero(states));
    }
  }
  return most;
}

}  // namespace zeb
