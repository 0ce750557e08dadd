#include "distances/rooting.h"

#include <algorithm>
#include <set>

#include "base/indices.h"
#include "trees/terminal_sets.h"

namespace zeb {
namespace {

terminal_set_key rest_of(const terminal_set_key& all, const terminal_set_key& part) {
  return {all.first - part.first, all.second - part.second};
}

// The groups of 2 terminals or more, but not all.
std::set<terminal_set_key> keys_of_groups(const cut_tree& tree) {
  const auto keys = terminal_set_keys(tree.ancestors, tree.terminals);
  return {keys.begin() + tree.root() + 1, keys.end()};
}

}  // namespace

std::vector<group_match> matches_of_groups(const cut_tree& tree, const cut_tree& other) {
  // With terminals: a group of all but one has that one as its complement in any tree.
  const auto keys_of_other = terminal_set_keys(other.ancestors, other.terminals);
  const std::set<terminal_set_key> groups(keys_of_other.begin(), keys_of_other.end());
  const auto keys = terminal_set_keys(tree.ancestors, tree.terminals);
  std::vector<group_match> matches(keys.size(), group_match::none);
  for (std::size_t n = at(tree.root()) + 1; n < keys.size(); ++n) {
    matches[n] = group_match::missing;
    if (groups.contains(keys[n]))
      matches[n] = group_match::same;
    else if (groups.contains(rest_of(keys[at(tree.root())], keys[n])))
      matches[n] = group_match::complement;
  }
  return matches;
}

// With the root on the branch below a node, the groups are those of all nodes but its ancestors,
// where it is what lies outside of them, and besides what lies outside of the node.
best_root best_root_of(const cut_tree& other, const cut_tree& tree) {
  const std::set<terminal_set_key> groups = keys_of_groups(tree);
  const auto keys = terminal_set_keys(other.ancestors, other.terminals);
  const int root = other.root();
  std::vector<int> inside(keys.size(), 0), outside(keys.size(), 0);
  best_root best{root, 0, 0};
  for (std::size_t n = 0; n < keys.size(); ++n) {
    if (static_cast<int>(n) == root) continue;
    inside[n] = groups.contains(keys[n]);
    // The two branches at a root are one: what is outside of one is the other.
    const bool at_root = other.ancestors[n] == root && other.lists.count[at(root)] == 2;
    outside[n] = !at_root && groups.contains(rest_of(keys[at(root)], keys[n]));
    best.shared_before += inside[n];
  }
  best.shared = best.shared_before;
  std::vector<int> with_root_at(keys.size(), best.shared_before);  // the branch of the node apart
  for (const int node : other.outward)
    for (const int child : other.children(node)) {
      if (node != root)
        with_root_at[at(child)] = with_root_at[at(node)] - inside[at(node)] + outside[at(node)];
      const int shared = with_root_at[at(child)] + outside[at(child)];
      const bool earlier = shared == best.shared && best.node != root && child < best.node;
      if (shared > best.shared || earlier) best = {child, shared, best.shared_before};
    }
  return best;
}

}  // namespace zeb
