#include "distances/moves/spr_path.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "base/taxon_set.h"

namespace zeb {
namespace {

std::vector<taxon_set> sets_of_nodes(const cut_tree& tree) {
  std::vector<taxon_set> sets(tree.sizes.size(), taxon_set(tree.terminals));
  for (int t = 0; t < tree.terminals; ++t) sets[at(t)].insert(t);
  for (auto node = tree.outward.rbegin(); node != tree.outward.rend(); ++node)
    for (const int child : tree.children(*node)) sets[at(*node)] |= sets[at(child)];
  return sets;
}

/// The smallest clade with these terminals.
int node_above(const cut_tree& tree, const std::vector<taxon_set>& sets,
               const taxon_set& terminals) {
  int node = terminals.first();
  while (!terminals.is_subset_of(sets[at(node)])) node = tree.ancestors[at(node)];
  return node;
}

std::vector<int> list_of(const taxon_set& set) { return {set.begin(), set.end()}; }

// A piece moves when it is a clade of the tree so far; it goes to the branch of the piece that it
// meets first on its way down in the other tree, and becomes a part of that piece. One of the
// pieces always is a clade: that whose node is farthest from the root.
class path_maker {
 public:
  path_maker(const cut_tree& a, const cut_tree& b, const agreement_forest& forest)
      : target_(b), target_sets_(sets_of_nodes(b)), now_(a) {
    for (const std::vector<int>& piece : forest.pieces) {
      pieces_.emplace_back(b.terminals);
      for (const int t : piece) pieces_.back().insert(t);
    }
  }

  std::vector<clade_move> run() {
    std::vector<clade_move> moves;
    while (pieces_.size() > 1) moves.push_back(next_move());
    ALWAYS_CHECK(now_.ancestors == normal(target_), "moves that lead to another tree");
    return moves;
  }

 private:
  static std::vector<tree_node> normal(const cut_tree& tree) {
    std::vector<tree_node> record = tree.ancestors;
    normalise_tree(record, tree.terminals);
    return record;
  }

  clade_move next_move() {
    const std::vector<taxon_set> sets = sets_of_nodes(now_);
    std::size_t moving = 1;
    int clade = -1;
    for (; moving < pieces_.size(); ++moving) {
      clade = node_above(now_, sets, pieces_[moving]);
      if (sets[at(clade)] == pieces_[moving]) break;
    }
    ALWAYS_CHECK(moving < pieces_.size(), "a forest whose pieces aren't clades");
    const auto [host, part] = place_in_target(moving);
    const int target = part.empty() ? now_.root() : node_above(now_, sets, part);
    clade_move move{list_of(pieces_[moving]), list_of(sets[at(target)] - pieces_[moving]),
                    now_.ancestors};
    move_clade(move.tree, now_.terminals, clade, target, false);
    pieces_[host] |= pieces_[moving];
    pieces_.erase(pieces_.begin() + static_cast<std::ptrdiff_t>(moving));
    now_ = cut_tree(move.tree, now_.terminals);
    return move;
  }

  struct place {
    std::size_t piece;
    taxon_set part;  // of the piece: what lies above the place
  };
  /// What the branch of a piece meets first on its way to the root of the other tree: another
  /// piece, where some of it lies above and some not, or the root's.
  place place_in_target(std::size_t moving) const {
    int node = node_above(target_, target_sets_, pieces_[moving]);
    while (node != target_.root()) {
      node = target_.ancestors[at(node)];
      for (std::size_t p = 0; p < pieces_.size(); ++p) {
        if (p == moving) continue;
        taxon_set part = pieces_[p] & target_sets_[at(node)];
        if (!part.empty() && (p == 0 || part != pieces_[p])) return {p, std::move(part)};
      }
    }
    return {0, pieces_[0]};
  }

  const cut_tree& target_;
  std::vector<taxon_set> target_sets_;
  cut_tree now_;
  std::vector<taxon_set> pieces_;
};

// ---- polytomies ----

bool fits(const taxon_set& group, const std::vector<taxon_set>& groups) {
  return std::ranges::none_of(groups, [&](const taxon_set& other) {
    return group.meets(other) && !group.is_subset_of(other) && !other.is_subset_of(group);
  });
}

/// Joins the descendants of polytomies from the left, the one with the lowest terminal first, as
/// groups.
void resolve_rest(std::vector<taxon_set>& groups, int terminals) {
  std::ranges::sort(groups, {}, [](const taxon_set& g) { return g.count(); });
  std::vector<taxon_set> waiting;
  for (int t = 0; t < terminals; ++t)
    waiting.emplace_back(terminals, std::initializer_list<int>{t});
  std::vector<taxon_set> added;
  for (const taxon_set& group : groups) {
    taxon_set joined(terminals);
    std::vector<taxon_set> rest;
    std::vector<taxon_set> own;
    for (taxon_set& part : waiting) (part.is_subset_of(group) ? own : rest).push_back(part);
    std::ranges::sort(own, {}, [](const taxon_set& g) { return g.first(); });
    for (std::size_t i = 0; i < own.size(); ++i) {
      joined |= own[i];
      if (i > 0 && i + 1 < own.size()) added.push_back(joined);
    }
    rest.push_back(group);
    waiting = std::move(rest);
  }
  groups.insert(groups.end(), added.begin(), added.end());
}

std::vector<tree_node> tree_of_groups(std::vector<taxon_set> groups, int terminals) {
  std::ranges::sort(groups, std::greater<>(), [](const taxon_set& g) { return g.count(); });
  std::vector<tree_node> tree(at(2 * terminals - 1), terminals);
  int next = terminals + 1;
  for (const taxon_set& group : groups) {
    if (group.count() < 2 || group.count() == terminals) continue;
    tree[at(next)] = tree[at(group.first())];
    for (const int t : group) tree[at(t)] = next;
    ++next;
  }
  tree[at(terminals)] = next;
  normalise_tree(tree, terminals);
  return tree;
}

std::vector<taxon_set> groups_of(const cut_tree& tree) {
  const std::vector<taxon_set> sets = sets_of_nodes(tree);
  return {sets.begin() + tree.terminals, sets.end()};
}

}  // namespace

std::vector<clade_move> moves_between(const cut_tree& a, const cut_tree& b,
                                      const agreement_forest& forest) {
  return path_maker(a, b, forest).run();
}

resolved_pair resolve_alike(const cut_tree& a, const cut_tree& b) {
  const int all = 2 * a.terminals - 1;
  if (a.nodes() == all && b.nodes() == all) return {a.ancestors, b.ancestors, false};
  std::vector<taxon_set> in_a = groups_of(a), in_b = groups_of(b);
  for (const taxon_set& group : groups_of(b))
    if (std::ranges::find(in_a, group) == in_a.end() && fits(group, in_a)) in_a.push_back(group);
  for (const taxon_set& group : in_a)
    if (std::ranges::find(in_b, group) == in_b.end() && fits(group, in_b)) in_b.push_back(group);
  resolve_rest(in_a, a.terminals);
  for (const taxon_set& group : in_a)
    if (std::ranges::find(in_b, group) == in_b.end() && fits(group, in_b)) in_b.push_back(group);
  resolve_rest(in_b, a.terminals);
  return {tree_of_groups(in_a, a.terminals), tree_of_groups(in_b, a.terminals), true};
}

}  // namespace zeb
