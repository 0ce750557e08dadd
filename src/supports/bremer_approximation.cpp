#include "supports/bremer_approximation.h"

#include <algorithm>
#include <cmath>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/progress.h"
#include "engine/plain/plain_optimisation.h"
#include "engine/plain/tree_scores.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// The tree with the descendants of a node joined to its ancestor, which keeps the node's number
/// unused.
std::vector<tree_node> without_branch(const_tree_span tree, int node) {
  std::vector<int> ancestors(tree.begin(), tree.end());
  std::vector<tree_node> out(tree.size(), 0);
  const int above = tree[at(node)];
  const int limit = node_limit(tree, matrix.ntax);
  for (int v = 0; v < limit; ++v) {
    const bool none = v == matrix.ntax || v == node || (v < matrix.ntax && is_absent(tree, v));
    ancestors[at(v)] = none ? -1 : tree[at(v)] == node ? above : tree[at(v)];
  }
  ancestors.resize(at(limit));
  record_from_ancestors(ancestors, out, matrix.ntax);
  return out;
}

}  // namespace

std::vector<double> costs_of_collapsing(const_tree_span tree) {
  const std::vector<std::uint8_t> characters = scored_characters();
  const fit_rules rules = current_fit_rules();
  plain_optimiser optimiser(characters);
  const auto score = [&](const_tree_span of) {
    optimiser.optimise(of, polytomy_kind::hard);
    return tree_score(optimiser, rules, characters);
  };
  const double whole = score(tree);
  const int limit = node_limit(tree, matrix.ntax);
  std::vector<double> costs(tree.size(), no_fraction);
  for (int v = matrix.ntax + 1; v < limit; ++v) {
    show_progress("Collapsing branches", v - matrix.ntax, limit - matrix.ntax);
    check_interrupt();
    const bool all_but_outgroup = tree[at(v)] == matrix.ntax &&
                                  tree[at(matrix.outgroup)] == matrix.ntax &&
                                  descendants_of(tree, matrix.ntax).count[at(matrix.ntax)] == 2;
    if (!all_but_outgroup) costs[at(v)] = score(without_branch(tree, v)) - whole;
  }
  clear_progress();
  return costs;
}

void show_approximation(const bremer_request& request) {
  std::vector<double> costs = costs_of_collapsing(stored_tree(request.approximate));
  std::erase_if(costs, [](double cost) { return std::isnan(cost); });
  std::ranges::sort(costs);
  const auto spared = static_cast<std::size_t>(request.spared * static_cast<double>(costs.size()));
  costs.resize(costs.size() - spared);
  const double needed = costs.empty() ? 0 : costs.back();
  std::string text = text_of("Suboptimal value needed to collapse all groups of tree %i: %.*f",
                             request.approximate, support_decimals(), needed);
  if (spared > 0)
    text += " (all but the " +
            counted(static_cast<long long>(spared), "best supported one", "best supported ones") +
            ")";
  emit(text, "\n");
}

}  // namespace zeb
