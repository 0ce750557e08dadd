#include "engine/fit/implied_weighting.h"

#include <algorithm>
#include <compare>
#include <limits>
#include <map>
#include <numeric>
#include <vector>

#include "base/arena.h"
#include "base/indices.h"
#include "engine/fit/fit_curves.h"
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

// ---- tables ----

/// What the fit of a character depends on besides its steps. Characters alike in this have one
/// table.
struct table_key {
  bool in_set;
  fit_function::form kind;
  double parameter;
  std::int32_t factor;
  std::int32_t min_steps;
  std::int32_t internal_steps;
  auto operator<=>(const table_key&) const = default;
};

table_key key_of(const fit_rules& rules, const pack_entry& e) {
  if (e.set >= 0) return {true, {}, 0, e.factor, e.min_steps, e.internal_steps};
  const fit_function& f = rules.functions[at(e.character)];
  return {false, f.kind, f.parameter, e.factor, e.min_steps, e.internal_steps};
}

/// No character has more steps on a tree than one for each internal node in each of its fields; and
/// joinings are costed that would add one for each field.
std::size_t entries_needed(const search_data& data, const pack_entry& e) {
  return checked_product(at(std::max(1, e.fields)), at(data.n)) + 2;
}

void fill_table(std::span<double> table, const table_key& key, const fit_rules& rules) {
  for (std::size_t i = 0; i < table.size(); ++i) {
    const double steps = static_cast<double>(key.factor) * static_cast<double>(i);
    const double homoplasy = std::max(0.0, steps - key.min_steps) + key.internal_steps;
    table[i] =
        key.in_set ? parts_of_a_step * homoplasy : rules.fit({key.kind, key.parameter}, homoplasy);
  }
}

std::map<table_key, std::span<double>> make_tables(const search_data& data,
                                                   const fit_rules& rules) {
  std::map<table_key, std::size_t> sizes;
  for (const pack_entry& e : data.entries) {
    std::size_t& size = sizes[key_of(rules, e)];
    size = std::max(size, entries_needed(data, e));
  }
  std::map<table_key, std::span<double>> tables;
  for (const auto& [key, size] : sizes) {
    const std::span<double> table = alloc_low<double>(size);
    fill_table(table, key, rules);
    tables[key] = table;
  }
  return tables;
}

/// From so many steps on, no step costs more than the one before.
std::int32_t concave_from(const table_key& key) {
  if (!key.in_set && key.kind == fit_function::form::table)
    return std::numeric_limits<std::int32_t>::max();
  return (std::max(0, key.min_steps) + key.factor - 1) / key.factor;
}

/// What a step would cost, from below.
double least_cost_of(const fit_layout& fits, const fit_counter& c) {
  const double slope = c.set < 0 ? 1 : least_slope(fits.sets[c.set]);
  return c.weight * least_step(c) * slope;
}

/// Each set gets the counters that are in it.
void fill_sets(search_data& data) {
  data.set_members = alloc_low<std::int32_t>(data.counters.size());
  std::iota(data.set_members.begin(), data.set_members.end(), 0);
  const auto set_of = [&](std::int32_t counter) { return data.counters[at(counter)].set; };
  std::stable_sort(data.set_members.begin(), data.set_members.end(),
                   [&](std::int32_t a, std::int32_t b) { return set_of(a) < set_of(b); });
  for (const std::int32_t& counter : data.set_members) {
    if (set_of(counter) < 0) continue;
    set_counter& set = data.fit_sets[at(set_of(counter))];
    if (set.count++ == 0) set.first = &counter;
  }
}

/// Where a counter's fields stand, once their places are final.
void locate_counter(search_data& data, std::size_t i) {
  const pack_entry& e = data.entries[i];
  const flag_places flags = flags_of_group(e.group);
  fit_counter& c = data.counters[i];
  c.first_field = first_field_number(data, e.group) + e.first_field;
  c.fields = e.fields;
  c.first_flag = 32 * data.group_start[at(e.group)] + flags.first + e.first_field * flags.width;
  c.flag_width = flags.width;
  std::fill_n(data.counter_of.begin() + c.first_field, e.fields, static_cast<std::int32_t>(i));
  if (e.fields == 0 || (e.fields == 1 && c.set < 0)) return;
  std::int32_t& shared_end = data.layout.fits.shared_end[at(e.group)];
  const int last_word = (e.first_field + e.fields - 1) / fields_per_word[at(e.group)];
  shared_end = std::max(shared_end, data.group_start[at(e.group)] + last_word + 1);
}

void allocate_counters(search_data& data) {
  data.counters = calloc_low<fit_counter>(data.entries.size());
  data.counter_of = alloc_low<std::int32_t>(data.field_weight.size());
  data.step_cost = calloc_low<double>(data.field_weight.size());
  constexpr std::size_t cache_line = 64;
  data.coarse_costs = alloc_low<word>(coarse_slices * at(data.layout.end3), cache_line);
  std::fill(data.counter_of.begin(), data.counter_of.end(), -1);
  data.layout.fits = {};
}

void hand_to_kernels(search_data& data) {
  data.layout.fits.counters = data.counters.data();
  data.layout.fits.counter_of = data.counter_of.data();
  data.layout.fits.step_cost = data.step_cost.data();
  data.layout.fits.sets = data.fit_sets.data();
  data.layout.fits.joining = calloc_low<std::uint64_t>(1).data();
  data.layout.fits.coarse_costs = data.coarse_costs.data();
}

}  // namespace

void prepare_fit_tables(search_data& data, const fit_rules& rules) {
  const std::map<table_key, std::span<double>> tables = make_tables(data, rules);
  allocate_counters(data);
  for (std::size_t i = 0; i < data.entries.size(); ++i) {
    const table_key key = key_of(rules, data.entries[i]);
    fit_counter& c = data.counters[i];
    c.fit = tables.at(key).data();
    c.set = data.entries[i].set;
    c.concave_from = concave_from(key);
    locate_counter(data, i);
  }
  data.fit_sets = calloc_low<set_counter>(rules.sets.size());
  for (std::size_t s = 0; s < data.fit_sets.size(); ++s)
    data.fit_sets[s].curve = curve_of_set(rules, static_cast<int>(s));
  fill_sets(data);
  hand_to_kernels(data);
}

void share_fit_tables(search_data& data, const search_data& outer,
                      std::span<const std::int32_t> outer_entries) {
  allocate_counters(data);
  for (std::size_t i = 0; i < data.entries.size(); ++i) {
    const fit_counter& theirs = outer.counters[at(outer_entries[i])];
    fit_counter& c = data.counters[i];
    c.fit = theirs.fit;
    c.set = theirs.set;
    c.concave_from = theirs.concave_from;
    locate_counter(data, i);
  }
  data.fit_sets = calloc_low<set_counter>(outer.fit_sets.size());
  for (std::size_t s = 0; s < data.fit_sets.size(); ++s)
    data.fit_sets[s].curve = outer.fit_sets[s].curve;
  fill_sets(data);
  hand_to_kernels(data);
}

void weigh_counters(search_data& data) {
  for (set_counter& set : data.fit_sets) set.most_gain = 0;
  for (std::size_t i = 0; i < data.entries.size(); ++i) {
    const pack_entry& e = data.entries[i];
    fit_counter& c = data.counters[i];
    c.weight = e.fields > 0 ? first_record(data, e).weight : e.weight;
    if (c.set >= 0)
      data.fit_sets[at(c.set)].most_gain += parts_of_a_step * c.weight * e.fields * e.factor;
  }
  reset_counters(data);
  choose_cost_units(data);
}

void reset_counters(search_data& data) {
  for (fit_counter& c : data.counters) c.steps = 0;
  if (data.has_wide) reset_wide_steps(data);
}

namespace {

/// Sums up the sets by their characters.
void sum_sets(search_data& data) {
  for (std::size_t s = 0; s < data.fit_sets.size(); ++s)
    data.fit_sets[s].sum = data.base_set_sums[s];
  for (const fit_counter& c : data.counters)
    if (c.set >= 0) data.fit_sets[at(c.set)].sum += c.weight * c.fit[c.steps];
  if (data.has_wide) add_wide_to_sets(data);
  for (set_counter& set : data.fit_sets) set.here = fit_at(set.curve, set.sum);
}

}  // namespace

void refresh_step_costs(search_data& data) {
  std::fill(data.coarse_costs.begin(), data.coarse_costs.end(), word{0});
  sum_sets(data);
  if (data.has_wide) refresh_wide_fits(data);
  for (fit_counter& c : data.counters) {
    c.coarse = 0;
    if (c.set < 0) refresh_step_cost(data.layout, c);
  }
  for (set_counter& set : data.fit_sets) refresh_set(data.layout, set);
}

void choose_cost_units(search_data& data) {
  sum_sets(data);
  // A step of the mean cost gets so many units: with fewer, rounding loses more, with more, more
  // steps cost above the most that is kept.
  constexpr double units_of_mean = 14;
  std::vector<double> gains(at(data.layout.end3 / words_per_block) + 1, 0);
  double costs = 0;
  double steps = 0;
  for (const fit_counter& c : data.counters) {
    // A character that changed often will do so again.
    const double own_steps = 1 + c.steps;
    const double gain = own_steps * least_cost_of(data.layout.fits, c);
    if (c.fields > 0) gains[at(c.first_flag / 32 / words_per_block)] += gain;
    costs += gain;
    steps += own_steps;
  }
  data.layout.fits.coarse_scale = costs > 0 ? units_of_mean * steps / costs : 1;
  const auto best = std::max_element(gains.begin(), gains.end()) - gains.begin();
  data.layout.head = words_per_block * static_cast<std::int32_t>(best);
  refresh_step_costs(data);
}

double total_fit(const search_data& data) {
  double sum = data.base_fit;
  for (const fit_counter& c : data.counters)
    if (c.set < 0) sum += c.weight * c.fit[c.steps];
  if (data.has_wide) sum += total_wide_fit(data);
  for (const set_counter& set : data.fit_sets) sum += set.here;
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
