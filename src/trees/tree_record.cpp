#include "trees/tree_record.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"

namespace zeb {

namespace {

/// A tree being rebuilt: ancestors with any node as the root, -1 for the root and for what isn't in
/// the tree. Nodes may have one descendant or none; `contract` makes a record of it.
std::vector<int> loosen(const_tree_span tree, int ntax, int spare_nodes) {
  const int limit = node_limit(tree, ntax);
  std::vector<int> up(at(limit + spare_nodes), -1);
  for (int v = 0; v < limit; ++v) {
    if (v != ntax && (v > ntax || tree[at(v)] != 0)) up[at(v)] = tree[at(v)];
  }
  return up;
}

/// Unhooks internal nodes without descendants, and those that this leaves without any.
void drop_empty_nodes(std::vector<int>& up, std::vector<int>& count, int ntax) {
  for (int v = ntax; v < static_cast<int>(up.size()); ++v) {
    int a = v;
    while (a >= ntax && count[at(a)] == 0 && up[at(a)] >= 0) {
      const int below = up[at(a)];
      up[at(a)] = -1;
      a = below;
      --count[at(a)];
    }
  }
}

/// Hooks every node to its nearest ancestor with more than one descendant. Each chain of
/// single-descendant nodes is walked a bounded number of times, so the whole is linear.
void skip_single_descendants(std::vector<int>& up, const std::vector<int>& count, int ntax) {
  const auto single = [&](int v) { return v >= ntax && count[at(v)] == 1; };
  for (int v = 0; v < static_cast<int>(up.size()); ++v) {
    int a = up[at(v)];
    while (a >= 0 && single(a)) a = up[at(a)];
    int step = v;
    while (up[at(step)] >= 0 && single(up[at(step)])) {
      const int next = up[at(step)];
      up[at(step)] = a;
      step = next;
    }
  }
}

/// Numbers internal nodes by first meeting and writes the record. Every node must have no or
/// several descendants.
void write_normalised(const std::vector<int>& up, tree_span tree, int ntax,
                      std::vector<int>* new_numbers) {
  std::vector<int> own_numbers;
  std::vector<int>& number = new_numbers ? *new_numbers : own_numbers;
  number.assign(up.size(), -1);
  int next = ntax + 1;
  for (int t = 0; t < ntax; ++t) {
    tree[at(t)] = 0;
    if (up[at(t)] < 0) continue;
    number[at(t)] = t;
    int v = t;
    for (bool known = false; !known;) {
      const int a = up[at(v)];
      known = number[at(a)] >= 0;
      if (!known) number[at(a)] = up[at(a)] < 0 ? ntax : next++;
      tree[at(number[at(v)])] = number[at(a)];
      v = a;
      if (up[at(v)] < 0) known = true;
    }
  }
  tree[at(ntax)] = next;
}

/// Writes the loose tree into `tree` in normal form, without its empty and single-descendant nodes.
void contract(std::vector<int>& up, tree_span tree, int ntax,
              std::vector<int>* new_numbers = nullptr) {
  std::vector<int> count(up.size(), 0);
  for (const int a : up) {
    if (a >= 0) ++count[at(a)];
  }
  drop_empty_nodes(up, count, ntax);
  int terminals = 0;
  int last = -1;
  for (int t = 0; t < ntax; ++t) {
    if (up[at(t)] >= 0) {
      ++terminals;
      last = t;
    }
  }
  if (terminals > 1) {
    skip_single_descendants(up, count, ntax);
    write_normalised(up, tree, ntax, new_numbers);
    return;
  }
  std::fill_n(tree.begin(), ntax, 0);
  tree[at(ntax)] = ntax + 1;
  if (last >= 0) tree[at(last)] = ntax;
  if (new_numbers) {
    new_numbers->assign(up.size(), -1);
    if (last >= 0) (*new_numbers)[at(last)] = last;
    (*new_numbers)[at(ntax)] = ntax;
  }
}

}  // namespace

bool is_absent(const_tree_span tree, int terminal) { return tree[at(terminal)] == 0; }

int terminals_in(const_tree_span tree, int ntax) {
  return ntax - static_cast<int>(std::count(tree.begin(), tree.begin() + ntax, 0));
}

void normalise_tree(tree_span tree, int ntax, std::vector<int>* new_numbers) {
  write_normalised(loosen(tree, ntax, 0), tree, ntax, new_numbers);
}

std::string check_tree_record(const_tree_span tree, int ntax) {
  const int limit = tree[at(ntax)];
  const int nnodes = 2 * ntax - 1;
  if (limit < ntax + 1 || limit > nnodes) return text_of("the root must hold the number of nodes");
  std::vector<int> descendants(at(limit), 0);
  for (int v = 0; v < limit; ++v) {
    if (v == ntax || (v < ntax && tree[at(v)] == 0)) continue;
    const int a = tree[at(v)];
    if (a < ntax || a >= limit || a == v) return text_of("node %i has ancestor %i", v, a);
    ++descendants[at(a)];
  }
  for (int v = ntax; v < limit; ++v) {
    if (descendants[at(v)] < 2) {
      return text_of("node %i has ", v) + counted(descendants[at(v)], "descendant", "descendants");
    }
  }
  // Every node must reach the root: a circle of ancestors doesn't. 1 reaches it, 2 on the way.
  std::vector<char> seen(at(limit), 0);
  seen[at(ntax)] = 1;
  for (int v = ntax + 1; v < limit; ++v) {
    int a = v;
    for (; seen[at(a)] == 0; a = tree[at(a)]) seen[at(a)] = 2;
    if (seen[at(a)] == 2) return text_of("node %i descends from itself", a);
    for (a = v; seen[at(a)] == 2; a = tree[at(a)]) seen[at(a)] = 1;
  }
  return {};
}

void delete_taxa(tree_span tree, int ntax, std::span<const std::uint8_t> flags) {
  bool any_left = false;
  for (int t = 0; t < ntax && !any_left; ++t) any_left = tree[at(t)] != 0 && !flags[at(t)];
  if (!any_left) error_end("Cannot delete all terminals from a tree");
  std::vector<int> up = loosen(tree, ntax, 0);
  for (int t = 0; t < ntax; ++t) {
    if (flags[at(t)]) up[at(t)] = -1;
  }
  contract(up, tree, ntax);
}

void remove_redundant_nodes(tree_span tree, int ntax, std::vector<int>* new_numbers) {
  std::vector<int> up = loosen(tree, ntax, 0);
  contract(up, tree, ntax, new_numbers);
}

void normalise_ancestors(const std::vector<int>& ancestors, tree_span tree, int ntax,
                         std::vector<int>* new_numbers) {
  write_normalised(ancestors, tree, ntax, new_numbers);
}

void record_from_ancestors(std::vector<int>& ancestors, tree_span tree, int ntax,
                           std::vector<int>* new_numbers) {
  contract(ancestors, tree, ntax, new_numbers);
}

void reroot_on_branch(tree_span tree, int ntax, int node) {
  if (node == ntax || (node < ntax && tree[at(node)] == 0)) return;
  if (terminals_in(tree, ntax) < 2) return;
  std::vector<int> up = loosen(tree, ntax, 1);
  const int new_root = static_cast<int>(up.size()) - 1;
  // Turn the links of the path from the node to the old root around.
  int v = up[at(node)];
  int above = new_root;
  up[at(node)] = new_root;
  while (v >= 0) {
    const int below = up[at(v)];
    up[at(v)] = above;
    above = v;
    v = below;
  }
  contract(up, tree, ntax);
}

void reroot_tree(tree_span tree, int ntax, int terminal) { reroot_on_branch(tree, ntax, terminal); }

bool descends_from(const_tree_span tree, int ntax, int node, int ancestor) {
  for (int v = node; v != ntax; v = tree[at(v)]) {
    if (v == ancestor) return true;
  }
  return ancestor == ntax;
}

bool move_clade(tree_span tree, int ntax, int node, int target, bool as_descendant) {
  if (node == ntax || descends_from(tree, ntax, target, node)) return false;
  std::vector<int> up = loosen(tree, ntax, 1);
  if (as_descendant) {
    up[at(node)] = target;
  } else {
    const int joint = static_cast<int>(up.size()) - 1;
    up[at(joint)] = up[at(target)];
    up[at(target)] = joint;
    up[at(node)] = joint;
  }
  contract(up, tree, ntax);
  return true;
}

void include_absent_taxa(tree_span tree, int ntax) {
  if (terminals_in(tree, ntax) == ntax) return;
  std::vector<int> up = loosen(tree, ntax, 1);
  const int new_root = static_cast<int>(up.size()) - 1;
  for (int t = 0; t < ntax; ++t) {
    if (up[at(t)] < 0) up[at(t)] = new_root;
  }
  up[at(ntax)] = new_root;
  contract(up, tree, ntax);
}

}  // namespace zeb
