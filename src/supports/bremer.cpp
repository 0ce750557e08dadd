#include "supports/bremer.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "engine/fit/fit_rules.h"
#include "engine/fit/weighting_settings.h"
#include "engine/plain/plain_optimisation.h"
#include "engine/plain/tree_scores.h"
#include "macro/macro_state.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"

namespace zeb {
namespace {

/// A step of a character without homoplasy is the unit of absolute supports that are combined.
double unit_of_steps() { return weighting.on ? general_step_cost(0) : 1; }

/// In per cent, but for the product.
double combined(const bremer_settings& wanted, double absolute, double relative) {
  if (wanted.combination == bremer_settings::product) return absolute * relative;
  if (absolute <= 0 || relative <= 0) return 0;
  const double exponent = unit_of_steps() * wanted.factor / absolute;
  return 100 * std::pow(relative * (1 - wanted.deletion), exponent);
}

double shown_value(const bremer_settings& wanted, double absolute, double relative) {
  if (wanted.combination != bremer_settings::none) return combined(wanted, absolute, relative);
  return wanted.measure == bremer_settings::absolute ? absolute : 100 * relative;
}

bool is_bounded(const bremer_settings& wanted, const group_measure& group) {
  if (wanted.combination != bremer_settings::none)
    return group.absolute == no_bound || group.relative == no_bound;
  return (wanted.measure == bremer_settings::absolute ? group.absolute : group.relative) ==
         no_bound;
}

std::string title_of(const bremer_settings& wanted, const std::string& source,
                     const reference_groups& groups) {
  const char* kind = "Bremer supports";
  if (wanted.combination != bremer_settings::none)
    kind = "Combined Bremer supports";
  else if (wanted.measure != bremer_settings::absolute)
    kind = "Relative Bremer supports";
  std::string title = std::string(kind) + " (from " + source + ", ";
  title += wanted.collapse_none ? "no cut)" : text_of("cut %g)", wanted.cut);
  const auto excluded = matrix.ntax - groups.tally.taxa_in_play();
  if (excluded > 0) title += text_of(" (%i taxa excluded)", excluded);
  return title;
}

}  // namespace

void take_loss(group_measure& group, const bremer_settings& wanted, double excess,
               double relative) {
  const bool cheaper = excess < group.absolute - score_tolerance;
  if (wanted.measure == bremer_settings::relative_within) {
    if (cheaper)
      group.relative = relative;
    else if (excess <= group.absolute + score_tolerance)
      group.relative = std::min(group.relative, relative);
  } else {
    group.relative = std::min(group.relative, relative);
  }
  if (cheaper) group.absolute = excess;
}

bool has_taxon(const group_record& group, int taxon) {
  return (group.words[taxon / taxa_per_word] >> (taxon % taxa_per_word) & 1U) != 0;
}

reference_groups::reference_groups(const_tree_span tree, std::span<const std::uint8_t> cut_off,
                                   std::span<const std::uint8_t> weights)
    : tally(matrix.ntax, cut_off), absent(cut_off.begin(), cut_off.end()) {
  if (!tally.count_tree_groups(tree, weights, true))
    error_end("Not enough memory for the groups of the tree (see \"mxram\")");
  record_of_node = tally.records_of_last_tree();
  measures.resize(tally.groups().size());
  const bool has_outgroup = !absent[at(matrix.outgroup)];
  for (std::size_t r = 0; r < measures.size(); ++r) {
    group_record& group = tally.groups()[r];
    if (group.count == 0) group.size = 0;
    const bool all_others = group.size == tally.taxa_in_play() - 1 && has_outgroup &&
                            !has_taxon(group, matrix.outgroup);
    measures[r].has_value = group.size > 0 && !all_others;
  }
}

int support_decimals() {
  // The format of `macfloat N`; those without a number of decimals are "%f" and "%g".
  if (macros.number_format.size() > 2) return macros.digits;
  return weighting.on || have_fractions(scored_characters()) ? 3 : 0;
}

bremer_result shown_supports(const reference_groups& groups, const bremer_settings& wanted,
                             const group_measure& bound, const std::string& source) {
  const std::size_t count = groups.measures.size();
  std::vector<double> values(count, no_fraction);
  std::vector<std::uint8_t> is_bound(count, 0);
  group_tally kept = groups.tally;  // counts become numbers of records
  for (std::size_t r = 0; r < count; ++r) {
    kept.groups()[r].count = static_cast<int>(r) + 1;
    const group_measure& group = groups.measures[r];
    if (!group.has_value) continue;
    is_bound[r] = is_bounded(wanted, group);
    values[r] = shown_value(wanted, group.absolute == no_bound ? bound.absolute : group.absolute,
                            group.relative == no_bound ? bound.relative : group.relative);
    const bool goes = !wanted.collapse_none && !is_bound[r] && values[r] < wanted.cut - 1e-9;
    if (goes) kept.groups()[r].count = 0;
  }
  const group_tree built = build_tree_from_groups(kept, 1, groups.absent);
  bremer_result result;
  result.tree = built.tree;
  result.values.assign(built.tree.size(), no_fraction);
  result.is_bound.assign(built.tree.size(), 0);
  for (std::size_t n = 0; n < built.tree.size(); ++n) {
    if (built.values[n] < 1) continue;
    result.values[n] = values[at(built.values[n] - 1)];
    result.is_bound[n] = is_bound[at(built.values[n] - 1)];
  }
  result.title = title_of(wanted, source, groups);
  result.decimals = support_decimals();
  if (wanted.combination == bremer_settings::product)
    result.decimals = std::max(result.decimals, 3);
  result.brackets_bounds = wanted.source == bremer_settings::from_trees;
  return result;
}

namespace {

/// No "-0".
std::string number_text(double value, int decimals) {
  std::string text = text_of("%.*f", decimals, value);
  if (text[0] == '-' && text.find_first_not_of("-0.") == std::string::npos) text.erase(0, 1);
  return text;
}

}  // namespace

std::string support_text(const bremer_result& result, std::size_t node) {
  const double value = result.values[node];
  if (std::isnan(value)) return {};
  const std::string text = number_text(value, result.decimals);
  if (!result.is_bound[node]) return text;
  return result.brackets_bounds ? "[" + text + "]" : ">" + text;
}

std::string support_label(const bremer_result& result, std::size_t node) {
  const double value = result.values[node];
  if (std::isnan(value)) return {};
  const std::string text = number_text(value, result.decimals);
  if (!result.is_bound[node]) return text;
  return (result.brackets_bounds ? ">=" : ">") + text;
}

std::vector<double> values_by_node(const bremer_result& result) {
  std::vector<double> values(at(node_limit(result.tree, matrix.ntax)), 0);
  for (std::size_t n = 0; n < values.size(); ++n)
    if (!std::isnan(result.values[n])) values[n] = result.values[n];
  return values;
}

}  // namespace zeb
