#include "engine/fit/implied_weighting.h"

#include <algorithm>

#include "base/arena.h"
#include "base/indices.h"
#include "engine/fit/step_costs.h"
#include "engine/joining.h"
#include "engine/wide/wide_costs.h"

namespace zeb {
namespace {

const field_record& first_record(const search_data& data, const pack_entry& e) {
  return data.fields[at(e.group)][at(e.first_field)];
}

/// Number of a group's first field in arrays by field, which leave out the unused groups.
int first_field_number(const search_data& data, int group) {
  int number = 0;
  for (int g = 0; g < group; ++g) number += data.field_count[at(g)];
  return number;
}

/// Bit that flags the first field of a group in its first word, and the bits between flags.
struct flag_places {
  int first;
  int width;
};
flag_places flags_of_group(int group) {
  const int width = field_bits[at(group)];
  return {group == 0 ? 0 : width - 1, width};
}

/// Homoplasy before any step is counted, with the offset. A character without fields never gets
/// more than its internal steps.
std::int32_t uncounted_steps(const search_data& data, const pack_entry& e) {
  if (e.fields == 0) return data.fit_offset + e.internal_steps;
  const field_record& record = first_record(data, e);
  return record.homoplasy_base + data.fit_offset - record.min_steps;
}

/// Offset and size of the tables. No character has more steps on a tree than one for each taxon in
/// each of its fields.
void measure_tables(search_data& data) {
  data.fit_offset = 0;
  for (const pack_entry& e : data.entries)
    if (e.fields > 0) data.fit_offset = std::max(data.fit_offset, first_record(data, e).min_steps);
  int most = 0;
  for (const pack_entry& e : data.entries)
    most = std::max(most, uncounted_steps(data, e) + e.fields * data.n);
  data.fit_size = most + 2;
}

}  // namespace

void prepare_fit_tables(search_data& data) {
  measure_tables(data);
  data.fit = alloc_low<double>(at(data.fit_size));
  data.fit_step = alloc_low<double>(at(data.fit_size));
  for (int i = 0; i < data.fit_size; ++i) {
    const double h = std::max(0, i - data.fit_offset);
    data.fit[at(i)] = h / (data.concavity + h);
    if (i > 0) data.fit_step[at(i - 1)] = data.fit[at(i)] - data.fit[at(i - 1)];
  }
  data.fit_step[at(data.fit_size - 1)] = 0;  // beyond all trees
  data.counters = alloc_low<fit_counter>(data.entries.size());
  data.counter_of = alloc_low<std::int32_t>(data.field_weight.size());
  data.step_cost = calloc_low<double>(data.field_weight.size());
  constexpr std::size_t cache_line = 64;
  data.coarse_planes = alloc_low<word>(coarse_digits * at(data.layout.end3), cache_line);
  std::fill(data.counter_of.begin(), data.counter_of.end(), -1);
  std::int32_t shared_end = 0;
  for (std::size_t i = 0; i < data.entries.size(); ++i) {
    const pack_entry& e = data.entries[i];
    const int first = first_field_number(data, e.group) + e.first_field;
    const flag_places flags = flags_of_group(e.group);
    fit_counter& c = data.counters[i];
    c = {};
    c.first_field = first;
    c.fields = e.fields;
    c.first_flag = 32 * data.group_start[at(e.group)] + flags.first + e.first_field * flags.width;
    c.flag_width = flags.width;
    std::fill_n(data.counter_of.begin() + first, e.fields, static_cast<std::int32_t>(i));
    if (e.fields > 1) shared_end = std::max(shared_end, (e.first_field + e.fields - 1) / 16 + 1);
  }
  data.layout.fits = {data.counters.data(),
                      data.counter_of.data(),
                      data.step_cost.data(),
                      data.fit_step.data(),
                      shared_end,
                      data.coarse_planes.data(),
                      1};
}

void weigh_counters(search_data& data) {
  double dearest = 0;
  for (std::size_t i = 0; i < data.entries.size(); ++i) {
    const pack_entry& e = data.entries[i];
    data.counters[i].weight = e.fields > 0 ? first_record(data, e).weight : e.weight;
    dearest = std::max(dearest, data.counters[i].weight);
  }
  // No step costs more than the dearest character's dearest: as many units as the digits hold.
  dearest *= *std::max_element(data.fit_step.begin(), data.fit_step.end());
  constexpr double most_units = (1 << coarse_digits) - 0.5;
  data.layout.fits.coarse_scale = dearest > 0 ? most_units / dearest : 1;
  reset_counters(data);
  refresh_step_costs(data);
}

void reset_counters(search_data& data) {
  for (std::size_t i = 0; i < data.entries.size(); ++i)
    data.counters[i].steps = uncounted_steps(data, data.entries[i]);
  if (data.has_wide) reset_wide_steps(data);
}

void refresh_step_costs(search_data& data) {
  std::fill(data.coarse_planes.begin(), data.coarse_planes.end(), word{0});
  for (fit_counter& c : data.counters) {
    c.coarse = 0;
    refresh_step_cost(data.layout, c);
  }
}

double total_fit(const search_data& data) {
  double sum = data.base_fit;
  for (const fit_counter& c : data.counters) sum += c.weight * data.fit[at(c.steps)];
  if (data.has_wide) sum += total_wide_fit(data);
  return sum;
}

void add_attachment_steps(search_data& data, join_side clip, join_side main) {
  data.kernels.fit.add_steps(packed_words(data, clip), packed_words(data, main), data.layout);
  if (data.has_wide) add_wide_steps(data, clip, main);
}

double remove_home_steps(search_data& data, join_side clip, join_side main) {
  double cost = data.kernels.fit.remove_steps(packed_words(data, clip), packed_words(data, main),
                                              data.layout);
  if (data.has_wide) cost += remove_wide_steps(data, clip, main);
  return cost;
}

double exact_score(search_data& data, join_side clip, join_side main) {
  add_attachment_steps(data, clip, main);
  const double score = total_fit(data);
  remove_home_steps(data, clip, main);
  return score;
}

}  // namespace zeb
