#include "compare/combined_scales.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "compare/compared_scales.h"

namespace zeb {
namespace {

constexpr double largest_stored = 65000;  // thousandths

class column_filler {
 public:
  column_filler(const comparison_task& task, const comparison& found, combination& result)
      : first_(task.first),
        second_(task.second),
        found_(found),
        result_(result),
        columns_(at(result.numbers.nchar)) {
    for (continuous_column& column : columns_) {
      column.values.resize(at(result.numbers.ntax));
      column.is_missing.assign(at(result.numbers.ntax), 1);
    }
  }

  void fill() {
    fill_from_second();
    fill_from_first();
    fill_decisions();
    for (int c = 0; c < result_.numbers.nchar; ++c) {
      if (result_.data.characters[at(c)].is_continuous())
        store_column(result_.data, c, columns_[at(c)]);
    }
  }

 private:
  void put(int character, int taxon, const entry_range& value) {
    columns_[at(character)].values[at(taxon)] = value;
    columns_[at(character)].is_missing[at(taxon)] = 0;
  }
  void fill_from_second();
  void fill_from_first();
  void fill_decisions();

  const data_set& first_;
  const data_set& second_;
  const comparison& found_;
  combination& result_;
  std::vector<continuous_column> columns_;
};

void column_filler::fill_from_second() {
  const combined_numbers& n = result_.numbers;
  for (int c = 0; c < second_.nchar(); ++c) {
    if (!second_.characters[at(c)].is_continuous()) continue;
    const int same = found_.characters.in_first[at(c)];
    const auto scale = std::ranges::find(found_.scales, same, &scale_match::character);
    for (int t = 0; t < second_.ntax(); ++t) {
      if (second_.is_silent(t, c) || (same >= 0 && found_.taxa.in_first[at(t)] >= 0)) continue;
      const entry_range value = second_.values(t, c);
      put(n.characters_of_second[at(c)], n.taxa_of_second[at(t)],
          scale == found_.scales.end() ? value : on_scale(value, *scale));
    }
  }
}

void column_filler::fill_from_first() {
  const combined_numbers& n = result_.numbers;
  for (int c = 0; c < first_.nchar(); ++c) {
    if (!first_.characters[at(c)].is_continuous()) continue;
    for (int t = 0; t < first_.ntax(); ++t) {
      if (!first_.is_silent(t, c))
        put(n.characters_of_first[at(c)], n.taxa_of_first[at(t)], first_.values(t, c));
    }
  }
}

void column_filler::fill_decisions() {
  const combined_numbers& n = result_.numbers;
  for (const scale_match& scale : found_.scales) {
    continuous_column& column = columns_[at(n.characters_of_first[at(scale.character)])];
    for (const scale_match::entry& entry : scale.differences) {
      const auto t = at(n.taxa_of_first[at(entry.taxon)]);
      column.values[t] = entry.result;
      column.is_missing[t] = entry.result_is_missing;
    }
  }
}

// The least and the largest value.
entry_range range_of(const continuous_column& column) {
  entry_range range;
  bool any = false;
  for (std::size_t t = 0; t < column.values.size(); ++t) {
    if (column.is_missing[t]) continue;
    const entry_range& value = column.values[t];
    range =
        any ? entry_range{std::min(range.low, value.low), std::max(range.high, value.high)} : value;
    any = true;
  }
  return range;
}

double thousandths(double value, const continuous_scale& scale) {
  return (value - scale.shift) / scale.factor * 1000;
}

}  // namespace

std::uint32_t stored_range(const entry_range& range, const continuous_scale& scale) {
  const auto stored = [](double thousandths) {
    return static_cast<std::uint32_t>(std::clamp(std::round(thousandths), 0.0, largest_stored));
  };
  return stored(thousandths(range.low, scale)) | stored(thousandths(range.high, scale)) << 16;
}

void store_column(data_set& data, int character, const continuous_column& column) {
  continuous_scale& scale = data.characters[at(character)].scale;
  const entry_range range = range_of(column);
  const auto fits = [&scale](double value) {
    const double stored = thousandths(value, scale);
    return stored > -0.5 && stored < largest_stored + 0.5;
  };
  if (!fits(range.low) || !fits(range.high)) {
    scale.shift = range.low;
    scale.factor = std::max((range.high - range.low) / (largest_stored / 1000), 1e-12);
  }
  for (int t = 0; t < data.ntax(); ++t) {
    const std::size_t place = data.place(t, character);
    const bool missing = column.is_missing[at(t)] != 0;
    data.cells[place] = missing ? missing_continuous : stored_range(column.values[at(t)], scale);
    data.notes[place] = missing ? silent_note : std::uint8_t{0};
  }
}

void store_continuous(const comparison_task& task, const comparison& found, combination& result) {
  column_filler(task, found, result).fill();
}

}  // namespace zeb
