#include "engine/fit/weighting_settings.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "language/list_text.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// Numbers the sets that are left without gaps, in the order that they had.
void close_gaps(std::vector<std::int32_t>& set_of) {
  std::vector<std::int32_t> used = set_of;
  std::sort(used.begin(), used.end());
  used.erase(std::unique(used.begin(), used.end()), used.end());
  std::erase(used, -1);
  if (used.empty()) set_of.clear();
  for (std::int32_t& set : set_of)
    if (set >= 0)
      set =
          static_cast<std::int32_t>(std::lower_bound(used.begin(), used.end(), set) - used.begin());
}

}  // namespace

weighting_settings weighting;

void set_implied_weights(bool on) { weighting.on = on; }
void set_concavity(double k) { weighting.concavity = k; }
void set_user_costs(std::vector<double> costs) { weighting.user_costs = std::move(costs); }
void check_characters_of_user_function() {
  for (const character_record& c : matrix.characters)
    if (c.active && (c.is_sankoff || c.is_continuous || c.type == landmark_data))
      error_end(
          "Sorry: user weighting functions are invalid\nfor sankoff/continuous/landmark "
          "characters.\nEither deactivate them, or weight by a concavity");
}

void set_extended_weighting(bool on) { weighting.extended = on; }

void set_own_concavity(std::span<const std::uint8_t> characters, double k) {
  std::vector<std::uint8_t> meant_sets(at(weighting_set_count()), 0);
  for (int c = 0; c < matrix.nchar; ++c)
    if (characters[at(c)] && !weighting.set_of.empty() && weighting.set_of[at(c)] >= 0)
      meant_sets[at(weighting.set_of[at(c)])] = 1;
  weighting.own_concavity.resize(at(matrix.nchar), 0);
  for (int c = 0; c < matrix.nchar; ++c) {
    const int set = weighting.set_of.empty() ? -1 : weighting.set_of[at(c)];
    if (characters[at(c)] || (set >= 0 && meant_sets[at(set)])) weighting.own_concavity[at(c)] = k;
  }
}

void extrapolate_to_missing(const missing_entry_rule& rule) {
  weighting.own_concavity.clear();
  weighting.missing = rule;
}

void clear_own_concavities() { extrapolate_to_missing({}); }

void set_weighting_sets(std::vector<std::int32_t> set_of) {
  for (int c = 0; c < matrix.nchar && !weighting.has_constant.empty(); ++c)
    if (set_of[at(c)] >= 0) weighting.has_constant[at(c)] = 0;
  close_gaps(set_of);
  weighting.set_of = std::move(set_of);
}

void set_constant_weight(std::span<const std::uint8_t> characters, int steps, double factor) {
  leave_weighting_sets(characters);
  weighting.has_constant.resize(at(matrix.nchar), 0);
  for (int c = 0; c < matrix.nchar; ++c)
    if (characters[at(c)]) weighting.has_constant[at(c)] = 1;
  weighting.constant_steps = steps;
  weighting.constant_factor = factor;
}

void leave_weighting_sets(std::span<const std::uint8_t> characters) {
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!characters[at(c)]) continue;
    if (!weighting.has_constant.empty()) weighting.has_constant[at(c)] = 0;
    if (!weighting.set_of.empty()) weighting.set_of[at(c)] = -1;
  }
  close_gaps(weighting.set_of);
}

bool has_own_concavities() {
  return weighting.missing.on ||
         std::any_of(weighting.own_concavity.begin(), weighting.own_concavity.end(),
                     [](double k) { return k > 0; });
}

int weighting_set_count() {
  if (weighting.set_of.empty()) return 0;
  return 1 + *std::max_element(weighting.set_of.begin(), weighting.set_of.end());
}

bool has_constant_weights() {
  return std::count(weighting.has_constant.begin(), weighting.has_constant.end(), 1) > 0;
}

std::vector<std::string> weighting_as_commands() {
  const bool used = weighting.on || has_extended_weighting() || !weighting.user_costs.empty() ||
                    weighting.concavity != weighting_settings{}.concavity;
  std::vector<std::string> commands;
  if (used) commands.push_back("piwe=" + exact_text(weighting.concavity));
  if (!weighting.user_costs.empty()) {
    commands.emplace_back("piwe[");
    for (const double cost : weighting.user_costs) commands.back() += " " + exact_text(cost);
  }
  const std::vector<std::string> extended = extended_weighting_as_commands();
  commands.insert(commands.end(), extended.begin(), extended.end());
  if (used && !weighting.on) commands.emplace_back("piwe-");
  return commands;
}

std::vector<std::string> extended_weighting_as_commands() {
  std::vector<std::string> commands;
  const auto add = [&](const std::string& head, const std::function<bool(int)>& holds) {
    commands.push_back(head + wrapped_words(list_items(matrix.nchar, holds), head.size()));
  };
  if (has_constant_weights())
    add(text_of("xpiwe/%ix", weighting.constant_steps) + exact_text(weighting.constant_factor),
        [](int c) { return weighting.has_constant[at(c)] != 0; });
  for (int set = 0; set < weighting_set_count(); ++set)
    add("xpiwe[", [set](int c) { return weighting.set_of[at(c)] == set; });
  if (weighting.missing.on)
    commands.push_back((weighting.missing.matches_costs ? "xpiwe(=" : "xpiwe(*") +
                       exact_text(weighting.missing.share) + "<" +
                       exact_text(weighting.missing.most_ratio));
  std::vector<double> values = weighting.own_concavity;
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
  for (const double k : values) {
    if (k <= 0) continue;
    add("xpiwe(", [k](int c) { return weighting.own_concavity[at(c)] == k; });
    commands.back() += "/" + exact_text(k);
  }
  if (!commands.empty() && !weighting.extended) commands.emplace_back("xpiwe-");
  return commands;
}

bool has_extended_weighting() {
  return has_own_concavities() || has_constant_weights() || weighting_set_count() > 0;
}

void forget_character_weighting() {
  const bool on = weighting.on;
  const double k = weighting.concavity;
  weighting = {};
  weighting.on = weighting.data_allow = on;
  weighting.concavity = k;
}

}  // namespace zeb
