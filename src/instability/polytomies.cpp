#include "instability/polytomies.h"

#include <algorithm>
#include <map>

#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/collapsing/collapsing.h"
#include "trees/terminal_sets.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

std::vector<taxon_set> branches_of(const_tree_span tree, const descendant_lists& lists, int node,
                                   int ntax) {
  std::vector<taxon_set> out;
  for (const int child : lists.children(node)) {
    std::vector<std::uint8_t> flags(at(ntax), 0);
    flag_terminals(tree, ntax, child, flags);
    out.push_back(taxon_set::of_flags(flags));
  }
  std::ranges::sort(out, {}, &taxon_set::first);
  return out;
}

/// The tree of one taxon of each branch; empty where the tree lacks a branch.
std::vector<tree_node> restricted(const std::vector<tree_node>& tree, const polytomy& to,
                                  int ntax) {
  const int k = to.size();
  std::vector<int> number(tree.size(), -1);  // of the terminals and, later, the inner nodes
  std::vector<tree_node> out(at(2 * k - 1), 0);
  for (int i = 0; i < k; ++i) {
    int found = -1;
    for (const int t : to.branches[at(i)])
      if (found < 0 && !is_absent(tree, t)) found = t;
    if (found < 0) return {};
    number[at(found)] = i;
  }
  std::vector<int> ancestors(at(k) + tree.size(), -1);
  for (int t = 0; t < ntax; ++t) {
    if (number[at(t)] < 0) continue;
    int own = number[at(t)];
    for (int v = t; v != ntax;) {
      v = tree[at(v)];
      const int above = k + v - ntax;
      if (ancestors[at(own)] >= 0) break;
      ancestors[at(own)] = above;
      own = above;
    }
  }
  record_from_ancestors(ancestors, out, k);
  return out;
}

/// Adds a tree to those that are alike.
class resolution_counter {
 public:
  void add(std::vector<tree_node> tree, int count, int first) {
    const auto [place, is_new] = numbers_.try_emplace(tree, all_.size());
    if (is_new) all_.push_back({std::move(tree), 0, first});
    all_[place->second].count += count;
  }
  std::vector<resolution> by_count() {
    std::ranges::stable_sort(all_, std::ranges::greater(), &resolution::count);
    return std::move(all_);
  }

 private:
  std::map<std::vector<tree_node>, std::size_t> numbers_;
  std::vector<resolution> all_;
};

}  // namespace

compared_copies::compared_copies(const tree_selection& selection) {
  const int rule = selection.collapse ? collapsing.rule : 0;
  branch_judge judge(rule, selection.excluded);
  for (const const_tree_span tree : selection.trees) {
    check_interrupt();
    trees_.emplace_back(tree.begin(), tree.end());
    if (rule != 0) judge.condense(trees_.back());
    if (!selection.excluded.empty()) delete_taxa(trees_.back(), selection.ntax, selection.excluded);
  }
}

std::vector<polytomy> polytomies_of(const_tree_span strict, const compared_copies& copies,
                                    int ntax) {
  const descendant_lists lists = descendants_of(strict, ntax);
  std::vector<polytomy> out;
  for (int node = ntax; node < node_limit(strict, ntax); ++node) {
    if (lists.count[at(node)] < 3) continue;
    polytomy found{node, branches_of(strict, lists, node, ntax), {}};
    resolution_counter counter;
    int number = 0;
    for (const std::vector<tree_node>& tree : copies.trees()) {
      check_interrupt();
      std::vector<tree_node> part = restricted(tree, found, ntax);
      if (!part.empty()) counter.add(std::move(part), 1, number);
      ++number;
    }
    found.resolutions = counter.by_count();
    out.push_back(std::move(found));
  }
  return out;
}

std::vector<resolution> without_branches(const polytomy& from,
                                         std::span<const std::uint8_t> left_out) {
  resolution_counter counter;
  for (const resolution& one : from.resolutions) {
    std::vector<tree_node> tree = one.tree;
    delete_taxa(tree, from.size(), left_out);
    counter.add(std::move(tree), one.count, one.first);
  }
  return counter.by_count();
}

int common_groups_of(const std::vector<resolution>& resolutions, int branches) {
  std::map<terminal_set_key, std::size_t> trees_with;
  for (const resolution& one : resolutions) {
    const std::vector<terminal_set_key> keys = terminal_set_keys(one.tree, branches);
    for (std::size_t v = at(branches) + 1; v < keys.size(); ++v) ++trees_with[keys[v]];
  }
  return static_cast<int>(std::ranges::count_if(
      trees_with, [&](const auto& group) { return group.second == resolutions.size(); }));
}

std::string resolution_text(const resolution& shown, int branches) {
  constexpr int closing = -1;
  const descendant_lists lists = descendants_of(shown.tree, branches);
  std::string text;
  std::vector<int> waiting{branches};
  while (!waiting.empty()) {
    const int node = waiting.back();
    waiting.pop_back();
    if (node == closing) {
      text += ')';
      continue;
    }
    if (!text.empty() && text.back() != '(') text += ' ';
    if (node < branches) {
      text += branch_letters(node);
      continue;
    }
    text += '(';
    waiting.push_back(closing);
    const auto from = static_cast<std::ptrdiff_t>(waiting.size());
    for (const int child : lists.children(node)) waiting.push_back(child);
    std::reverse(waiting.begin() + from, waiting.end());
  }
  return text;
}

std::string branch_letters(int branch) {
  std::string letters;
  for (int rest = branch + 1; rest > 0; rest = (rest - 1) / 26)
    letters.insert(letters.begin(), static_cast<char>('A' + (rest - 1) % 26));
  return letters;
}

}  // namespace zeb
