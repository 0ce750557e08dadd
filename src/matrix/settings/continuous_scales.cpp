#include "matrix/settings/continuous_scales.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

constexpr double largest_stored = 65000;

struct value_pair {
  double low;
  double high;
};

bool has_value(std::uint32_t states) { return (states >> 16) < 65534 || (states & 0xffffU) != 0; }

value_pair logarithms(const value_pair& v) { return {std::log(v.low), std::log(v.high)}; }

std::uint32_t stored_cell(const value_pair& value, double factor, double shift) {
  const auto stored = [&](double v) {
    const double scaled = std::round((v - shift) / factor * 1000.0);
    return static_cast<std::uint32_t>(std::clamp(scaled, 0.0, largest_stored));
  };
  return stored(value.low) | (stored(value.high) << 16);
}

value_pair value_of(const kept_values& kept, int taxon) {
  const std::uint32_t states = kept.cells[at(taxon)];
  const auto original = [&kept](std::uint32_t stored) {
    const double value = stored / 1000.0 * kept.factor + kept.shift;
    return kept.logarithmic ? std::exp(value) : value;
  };
  return {original(states & 0xffffU), original(states >> 16)};
}

// The value of a cell in original units: that which was read, if the cell still holds what
// rescaling made of it, else (it was edited) what it holds now.
value_pair original_value_of(int taxon, int character) {
  const auto kept = matrix.values_as_read.find(character);
  if (kept != matrix.values_as_read.end() && has_value(kept->second.cells[at(taxon)])) {
    const value_pair read = value_of(kept->second, taxon);
    const continuous_scale& scale = matrix.scales[at(character)];
    const bool logarithmic = matrix.characters[at(character)].log_scale;
    if (stored_cell(logarithmic ? logarithms(read) : read, scale.factor, scale.shift) ==
        cell(taxon, character)) {
      return read;
    }
  }
  const continuous_cell stored = read_continuous_cell(taxon, character);
  return {original_value(character, stored.low), original_value(character, stored.high)};
}

// The values of all taxa in original units, logarithms of them if asked for; NaN without a value.
std::vector<value_pair> original_values(int character, bool in_logarithm) {
  std::vector<value_pair> values(at(matrix.ntax), {NAN, NAN});
  for (int t = 0; t < matrix.ntax; ++t) {
    if (!has_value(cell(t, character))) continue;
    const value_pair value = original_value_of(t, character);
    if (in_logarithm && value.low <= 0) {
      error_end_f("Cannot convert 0 values into logarithms (char. %i)", character);
    }
    values[at(t)] = in_logarithm ? logarithms(value) : value;
  }
  return values;
}

// The gap between the lowest upper end and the highest lower end; 0 where all ranges overlap.
double minimum_gap(const std::vector<value_pair>& values, std::span<const std::uint8_t> taxa) {
  double lowest_high = HUGE_VAL;
  double highest_low = -HUGE_VAL;
  for (std::size_t t = 0; t < values.size(); ++t) {
    if (!taxa[t] || std::isnan(values[t].low)) continue;
    lowest_high = std::min(lowest_high, values[t].high);
    highest_low = std::max(highest_low, values[t].low);
  }
  return std::max(0.0, highest_low - lowest_high);
}

// From the lowest to the highest of all values; the wrong way round where there are none.
value_pair range_of(const std::vector<value_pair>& values) {
  value_pair range = {HUGE_VAL, -HUGE_VAL};
  for (const value_pair& v : values) {
    if (std::isnan(v.low)) continue;
    range.low = std::min(range.low, v.low);
    range.high = std::max(range.high, v.high);
  }
  return range;
}

void store_values(int character, const std::vector<value_pair>& values, double factor,
                  double shift) {
  character_record& record = matrix.characters[at(character)];
  record.scale_low = character_record{}.scale_low;
  record.scale_high = character_record{}.scale_high;
  for (int t = 0; t < matrix.ntax; ++t) {
    if (std::isnan(values[at(t)].low)) continue;
    const std::uint32_t states = stored_cell(values[at(t)], factor, shift);
    set_cell(t, character, states);
    record.scale_low = std::min(record.scale_low, static_cast<int>(states & 0xffffU));
    record.scale_high = std::max(record.scale_high, static_cast<int>(states >> 16));
  }
  continuous_scale& scale = matrix.scales[at(character)];
  scale.factor = factor;
  scale.shift = shift;
  record.scale_changed = factor != 1.0 || shift != 0.0;
  record.needs_recheck = 1;
}

struct linear_scale {
  double factor;
  double shift;
};

// The wanted scale if all values fit in it; else one without loss of range, as in reading.
linear_scale scale_for(const std::vector<value_pair>& values, linear_scale wanted) {
  const auto [least, largest] = range_of(values);
  const auto fits = [&wanted](double v) {
    const double stored = (v - wanted.shift) / wanted.factor * 1000.0;
    return stored > -0.5 && stored < largest_stored + 0.5;
  };
  if (least > largest || (fits(least) && fits(largest))) return wanted;
  return {std::max(1.0, (largest - least) / (largest_stored / 1000.0)), least};
}

// Before the first rescaling.
void keep_values(int character) {
  if (matrix.values_as_read.contains(character)) return;
  kept_values kept;
  for (int t = 0; t < matrix.ntax; ++t) kept.cells.push_back(cell(t, character));
  kept.factor = matrix.scales[at(character)].factor;
  kept.shift = matrix.scales[at(character)].shift;
  kept.logarithmic = matrix.characters[at(character)].log_scale;
  matrix.values_as_read.emplace(character, std::move(kept));
}

}  // namespace

bool any_continuous() { return (matrix.data_type_in_use & continuous_data) != 0; }

void standardise(int character, double steps, std::span<const std::uint8_t> taxa,
                 bool in_logarithm) {
  character_record& record = matrix.characters[at(character)];
  // A character that is in log form already stays in it.
  const bool stays_logarithmic = record.log_scale && !in_logarithm;
  std::vector<value_pair> values = original_values(character, in_logarithm || stays_logarithmic);
  const double gap = minimum_gap(values, taxa);
  if (gap <= 0) return;
  const double factor = gap / steps;
  const auto [least, largest] = range_of(values);
  if ((largest - least) / factor * 1000.0 > largest_stored + 0.5) {
    error_end_f("Cannot rescale char. %i to a minimum of %g steps: its values would exceed 65",
                character, steps);
  }
  continuous_scale& scale = matrix.scales[at(character)];
  keep_values(character);
  if (in_logarithm && !record.log_scale) {
    scale.kept_factor = scale.factor;
    scale.kept_shift = scale.shift;
    record.log_scale = 1;
  }
  // Values that fit as they are aren't shifted: 0 stays 0.
  const bool fits = least >= 0 && largest / factor * 1000.0 <= largest_stored;
  store_values(character, values, factor, fits ? 0.0 : least);
}

void undo_logarithm(int character) {
  character_record& record = matrix.characters[at(character)];
  if (!record.log_scale) return;
  const continuous_scale scale = matrix.scales[at(character)];
  const std::vector<value_pair> values = original_values(character, false);
  record.log_scale = 0;
  const linear_scale linear = scale_for(values, {scale.kept_factor, scale.kept_shift});
  store_values(character, values, linear.factor, linear.shift);
}

void shift_scale(int character, double by) {
  if (matrix.characters[at(character)].log_scale) {
    error_end(
        "Cannot shift characters in log form;\nDe-log characters with \"nstates lstand -\" and "
        "then shift");
  }
  matrix.scales[at(character)].shift += by;
  const auto kept = matrix.values_as_read.find(character);
  if (kept != matrix.values_as_read.end()) kept->second.shift += by;
  matrix.characters[at(character)].scale_changed = 1;
}

void fix_scale(int character) {
  matrix.scales[at(character)] = continuous_scale{};
  matrix.characters[at(character)].scale_changed = 0;
  matrix.characters[at(character)].log_scale = 0;
  matrix.values_as_read.erase(character);
}

void set_scale(int character, double factor, double shift, bool logarithmic) {
  continuous_scale& scale = matrix.scales[at(character)];
  scale.factor = factor;
  scale.shift = shift;
  matrix.values_as_read.erase(character);
  character_record& record = matrix.characters[at(character)];
  record.log_scale = logarithmic;
  record.scale_changed = logarithmic || factor != 1.0 || shift != 0.0;
}

}  // namespace zeb
