#include "engine/fit/fit_rules.h"

#include <algorithm>
#include <cmath>

#include "base/indices.h"
#include "engine/fit/weighting_settings.h"
#include "engine/plain/plain_optimisation.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// Between the entries of the user's table on a line; beyond its end as its last step.
double value_of_table(const std::vector<double>& table, double homoplasy) {
  const std::size_t last = table.size() - 1;
  const auto below = std::min(static_cast<std::size_t>(homoplasy), last - 1);
  const double step = table[below + 1] - table[below];
  return table[below] + (homoplasy - static_cast<double>(below)) * step;
}

struct entry_count {
  double observed = 0;
  double all = 0;
};

entry_count count_entries(int character) {
  entry_count count;
  const landmark_configuration* const landmarks = find_configuration(matrix.landmarks, character);
  for (int t = 0; t < matrix.ntax; ++t) {
    if (!matrix.taxon_active[at(t)]) continue;
    if (landmarks) {
      for (const landmark_point& p : points_of(*landmarks, t)) count.observed += !is_missing(p);
      count.all += landmarks->points;
      continue;
    }
    count.observed += !says_nothing(character, cell(t, character));
    ++count.all;
  }
  return count;
}

/// The general concavity lowered by the homoplasy that missing entries are taken to hide.
double extrapolated_concavity(const entry_count& entries) {
  const missing_entry_rule& rule = weighting.missing;
  const double hidden = (entries.all - entries.observed) * rule.share;
  const double shown = entries.observed + hidden;
  const double share = shown > 0 ? entries.observed / shown : 1;
  const double ratio = std::max(1 / rule.most_ratio, share);
  if (rule.matches_costs && weighting.user_costs.empty())
    return matched_concavity(weighting.concavity, 1 / ratio);
  return ratio * weighting.concavity;
}

/// The general function, and the table that it may need.
fit_rules general_rules() {
  fit_rules rules;
  rules.on = weighting.on;
  rules.concavity = weighting.concavity;
  if (!weighting.user_costs.empty()) rules.user.push_back(0);
  for (const double cost : weighting.user_costs) rules.user.push_back(rules.user.back() + cost);
  return rules;
}

fit_function function_with(double k) {
  if (weighting.user_costs.empty()) return {fit_function::form::hyperbola, k};
  return {fit_function::form::table, weighting.concavity / k};
}

double step_cost(const fit_rules& rules, double steps) {
  const fit_function general = function_with(weighting.concavity);
  return rules.fit(general, steps + 1) - rules.fit(general, steps);
}

double own_concavity(int character) {
  return weighting.own_concavity.empty() ? 0 : weighting.own_concavity[at(character)];
}

fit_function function_of(int character) {
  const double own = own_concavity(character);
  if (own > 0) return function_with(own);
  const bool landmarks = matrix.characters[at(character)].type == landmark_data;
  if (!weighting.missing.on || landmarks) return function_with(weighting.concavity);
  return function_with(extrapolated_concavity(count_entries(character)));
}

/// A landmark configuration counts each of its points.
int items_of_set(int character) {
  const landmark_configuration* const points = find_configuration(matrix.landmarks, character);
  return points ? points->points : 1;
}

/// All of a set have one function: by the concavity that the user gave it, or by the missing
/// entries of all its characters that scores count.
void add_sets(fit_rules& rules, std::span<const std::uint8_t> scored) {
  const auto count = at(weighting_set_count());
  rules.set_of = weighting.set_of;
  rules.sets.resize(count);
  std::vector<double> own(count, 0);
  std::vector<entry_count> entries(count);
  for (int c = 0; c < matrix.nchar; ++c) {
    if (rules.set_of[at(c)] < 0 || !scored[at(c)]) continue;
    const auto set = at(rules.set_of[at(c)]);
    rules.sets[set].characters += items_of_set(c);
    if (own[set] <= 0) own[set] = own_concavity(c);
    if (!weighting.missing.on) continue;
    const entry_count more = count_entries(c);
    entries[set].observed += more.observed;
    entries[set].all += more.all;
  }
  for (std::size_t s = 0; s < count; ++s) {
    rules.sets[s].characters = std::max(1.0, rules.sets[s].characters);
    double k = weighting.concavity;
    if (own[s] > 0)
      k = own[s];
    else if (weighting.missing.on && entries[s].all > 0)
      k = extrapolated_concavity(entries[s]);
    rules.sets[s].function = function_with(k);
  }
  for (int c = 0; c < matrix.nchar; ++c)
    if (rules.set_of[at(c)] >= 0)
      rules.functions[at(c)] = rules.sets[at(rules.set_of[at(c)])].function;
}

void make_weights_constant(fit_rules& rules) {
  const double step = step_cost(rules, weighting.constant_steps);
  const fit_function line = {fit_function::form::line, weighting.constant_factor * step};
  for (std::size_t c = 0; c < rules.functions.size(); ++c)
    if (weighting.has_constant[c]) rules.functions[c] = line;
}

/// What the step after `steps` costs, against the first one.
double relative_cost(double k, double steps) {
  return (k * k + k) / ((steps + k) * (steps + k + 1));
}

}  // namespace

double fit_rules::fit(const fit_function& function, double homoplasy) const {
  switch (function.kind) {
    case fit_function::form::line:
      return homoplasy * function.parameter;
    case fit_function::form::table:
      return value_of_table(user, homoplasy * function.parameter);
    case fit_function::form::hyperbola:
      break;
  }
  return homoplasy / (function.parameter + homoplasy);
}

double fit_rules::set_fit(int set, double sum) const {
  const fit_set& s = sets[at(set)];
  return s.characters * fit(s.function, sum / s.characters);
}

fit_rules current_fit_rules() {
  if (weighting.on && !weighting.user_costs.empty()) check_characters_of_user_function();
  fit_rules rules = general_rules();
  rules.functions.assign(at(matrix.nchar), function_with(weighting.concavity));
  if (!weighting.extended) return rules;
  if (has_own_concavities())
    for (int c = 0; c < matrix.nchar; ++c) rules.functions[at(c)] = function_of(c);
  if (weighting_set_count() > 0) add_sets(rules, scored_characters());
  if (has_constant_weights()) make_weights_constant(rules);
  return rules;
}

fit_function function_of_point(const fit_rules& rules, int character, double observed, double all) {
  const fit_function& given = rules.functions[at(character)];
  const bool by_entries = weighting.extended && weighting.missing.on &&
                          own_concavity(character) <= 0 && rules.set_of_character(character) < 0 &&
                          given.kind != fit_function::form::line;
  return by_entries ? function_with(extrapolated_concavity({observed, all})) : given;
}

double general_step_cost(double steps) { return step_cost(general_rules(), steps); }

double most_homoplasy(int character) {
  const character_record& record = matrix.characters[at(character)];
  const int least = homoplasy_base(character, minimum_steps(character));
  const double extra = std::max(0, maximum_steps(character) - least);
  return extra / (record.is_continuous ? 1000 : 1) + record.internal_steps;
}

int most_extra_steps() {
  double most = 0;
  for (int c = 0; c < matrix.nchar; ++c)
    if (matrix.characters[at(c)].active) most = std::max(most, most_homoplasy(c));
  return static_cast<int>(std::ceil(most));
}

double matched_concavity(double k, double ratio) {
  if (ratio < 1.00001) return k;
  // The mean difference rises with the concavity, so halving an interval finds where it is none.
  constexpr int most_steps = 14;
  double low = 0;
  double high = k;
  for (int round = 0; round < 60; ++round) {
    const double middle = (low + high) / 2;
    double difference = 0;
    for (int h = 1; h <= most_steps; ++h)
      difference += relative_cost(middle, h) / relative_cost(k, ratio * h) - 1;
    (difference > 0 ? high : low) = middle;
  }
  return (low + high) / 2;
}

}  // namespace zeb
