#include "support/reconstructions.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>

namespace naive {
namespace {

constexpr int most_states = 6;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// What shortest reconstructions have at the two ends of one branch.
struct branch_ends {
  std::uint32_t above = 0;
  std::uint32_t below = 0;
  bool may_change = false;
  bool may_stay = false;
};

/// States that inner nodes may have: those that occur, or lie between.
std::uint32_t possible_states(const small_character& c, std::uint32_t terminals) {
  std::uint32_t states = 0;
  for (std::size_t t = 0; t < c.cells.size(); ++t)
    if (terminals >> t & 1) states |= c.cells[t];
  if (!states) return 1;
  if (!c.additive) return states;
  const auto high = static_cast<int>(std::bit_width(states));
  return ((1U << high) - 1) & ~((1U << std::countr_zero(states)) - 1);
}

int change(int a, int b, bool additive) { return additive ? std::abs(a - b) : a != b; }

int terminal_change(int above, std::uint32_t cell, bool additive) {
  int least = cell ? most_states : 0;
  for (int s = 0; s < most_states; ++s)
    if (cell >> s & 1) least = std::min(least, change(above, s, additive));
  if (additive && cell && above >= std::countr_zero(cell) &&
      above < static_cast<int>(std::bit_width(cell)))
    return 0;
  return least;
}

/// Goes through all states of the inner nodes; two rounds, the first for the least length.
std::vector<branch_ends> all_reconstructions(const rooted_tree& tree, const small_character& c,
                                             std::uint32_t terminals) {
  const std::uint32_t states = possible_states(c, terminals);
  std::vector<int> inner;
  for (int v = tree.terminals; v < static_cast<int>(tree.parent.size()); ++v) inner.push_back(v);
  std::vector<branch_ends> ends(tree.parent.size());
  std::vector<int> state(tree.parent.size(), std::countr_zero(states));
  int least = 1'000'000;
  for (const bool collect : {false, true}) {
    std::fill(state.begin(), state.end(), std::countr_zero(states));
    for (bool more = true; more;) {
      int length = 0;
      for (std::size_t v = 0; v < tree.parent.size(); ++v) {
        if (tree.parent[v] < 0) continue;
        const int above = state[at(tree.parent[v])];
        length += static_cast<int>(v) < tree.terminals
                      ? terminal_change(above, c.cells[v], c.additive)
                      : change(above, state[v], c.additive);
      }
      if (!collect) least = std::min(least, length);
      if (collect && length == least)
        for (const int v : inner) {
          if (tree.parent[at(v)] < 0) continue;
          const int above = state[at(tree.parent[at(v)])];
          branch_ends& e = ends[at(v)];
          e.above |= 1U << above;
          e.below |= 1U << state[at(v)];
          (above == state[at(v)] ? e.may_stay : e.may_change) = true;
        }
      more = false;
      for (const int v : inner) {
        int& s = state[at(v)];
        do ++s;
        while (s < most_states && !(states >> s & 1));
        if (s < most_states) {
          more = true;
          break;
        }
        s = std::countr_zero(states);
      }
    }
  }
  return ends;
}

std::uint32_t terminals_in(const rooted_tree& tree) {
  std::uint32_t terminals = 0;
  for (int t = 0; t < tree.terminals; ++t)
    if (tree.parent[at(t)] >= 0) terminals |= 1U << t;
  return terminals;
}

}  // namespace

std::vector<std::uint32_t> groups_below(const rooted_tree& tree) {
  std::vector<std::uint32_t> groups(tree.parent.size(), 0);
  for (int t = 0; t < tree.terminals; ++t)
    if (tree.parent[at(t)] >= 0)
      for (int v = t; v >= 0; v = tree.parent[at(v)]) groups[at(v)] |= 1U << t;
  return groups;
}

rooted_tree tree_of_groups(int n, std::uint32_t terminals, const std::set<std::uint32_t>& groups) {
  rooted_tree tree{n, std::vector<int>(at(n + 1), -1)};
  std::vector<std::uint32_t> of_node(at(n + 1), 0);
  of_node[at(n)] = terminals;
  for (const std::uint32_t g : groups) {
    if (g == terminals || std::popcount(g) < 2) continue;
    tree.parent.push_back(-1);
    of_node.push_back(g);
  }
  for (int t = 0; t < n; ++t)
    if (terminals >> t & 1) of_node[at(t)] = 1U << t;
  for (std::size_t v = 0; v < of_node.size(); ++v) {
    if (static_cast<int>(v) == n || of_node[v] == 0) continue;
    int best = n;
    for (int u = n; u < static_cast<int>(of_node.size()); ++u)
      if (u != static_cast<int>(v) && (of_node[at(u)] & of_node[v]) == of_node[v] &&
          std::popcount(of_node[at(u)]) < std::popcount(of_node[at(best)]))
        best = u;
    tree.parent[v] = best;
  }
  return tree;
}

std::set<std::uint32_t> groups_that_stay(const rooted_tree& tree,
                                         const std::vector<small_character>& characters, int rule) {
  const std::uint32_t terminals = terminals_in(tree);
  const std::vector<std::uint32_t> group = groups_below(tree);
  std::set<std::uint32_t> stay;
  for (const small_character& c : characters) {
    const std::vector<branch_ends> ends = all_reconstructions(tree, c, terminals);
    for (std::size_t v = at(tree.terminals); v < tree.parent.size(); ++v) {
      if (tree.parent[v] < 0) continue;
      const branch_ends& e = ends[v];
      const bool tells = rule == 1 ? e.may_change : rule == 3 ? !e.may_stay : e.above != e.below;
      if (tells) stay.insert(group[v]);
    }
  }
  if (rule == 4)
    return groups_that_stay(tree_of_groups(tree.terminals, terminals, stay), characters, 3);
  return stay;
}

}  // namespace naive
