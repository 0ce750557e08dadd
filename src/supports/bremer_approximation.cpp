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

/// The tree without two internal nodes (they may be the same), whose descendants go to their
/// ancestors.
std::vector<tree_node> without_nodes(const_tree_span tree, int one, int other) {
  const int limit = node_limit(tree, matrix.ntax);
  std::vector<int> ancestors(at(limit), -1);
  for (int v = 0; v < limit; ++v) {
    if (v == matrix.ntax || v == one || v == other) continue;
    if (v < matrix.ntax && is_absent(tree, v)) continue;
    const int above = tree[at(v)];
    ancestors[at(v)] = above == one || above == other ? tree[at(above)] : above;
  }
  std::vector<tree_node> out(tree.size(), 0);
  record_from_ancestors(ancestors, out, matrix.ntax);
  return out;
}

/// The two nodes at a root without a third one stand at the ends of one branch: the other end.
/// Elsewhere the node itself.
int other_end(const_tree_span tree, const descendant_lists& lists, int node) {
  if (tree[at(node)] != matrix.ntax || lists.count[at(matrix.ntax)] != 2) return node;
  for (const int v : lists.children(matrix.ntax))
    if (v != node) return v;
  return node;
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
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  std::vector<double> costs(tree.size(), no_fraction);
  for (int v = matrix.ntax + 1; v < limit; ++v) {
    show_progress("Collapsing branches", v - matrix.ntax, limit - matrix.ntax);
    check_interrupt();
    const int other = other_end(tree, lists, v);
    if (other > matrix.ntax) costs[at(v)] = score(without_nodes(tree, v, other)) - whole;
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
