#include "mapping/state_changes.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/costs/character_costs.h"
#include "matrix/matrix.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

constexpr int impossible = 1'000'000'000;

// Of the reconstructions of a subtree with a given state at its root: the steps of the shortest,
// and among those the least and the most changes asked for.
struct subtree_count {
  int steps = 0;
  int least = 0;
  int most = 0;
};

// The states that matter: those that occur, and between the extremes of an additive character.
std::vector<int> possible_states(int character) {
  std::uint32_t observed = 0;
  for (int t = 0; t < matrix.ntax; ++t) {
    const std::uint32_t states = cell(t, character);
    if (!says_nothing(character, states)) observed |= states;
  }
  std::vector<int> states;
  if (!observed) return states;
  const bool additive = matrix.characters[at(character)].additive;
  for (int s = std::countr_zero(observed); s <= 31 - std::countl_zero(observed); ++s)
    if (additive || (observed >> s & 1U)) states.push_back(s);
  return states;
}

class change_counter {
 public:
  change_counter(int character, std::uint32_t from, std::uint32_t to)
      : character_(character),
        record_(matrix.characters[at(character)]),
        from_(from),
        to_(to),
        states_(possible_states(character)) {
    if (!record_.is_sankoff) return;
    costs_ = costs_of_character(character);
    states_ = costs_.states;
  }

  // Dynamic programming from the tips: counts[node] by state, the best of each descendant's
  // states being chosen by steps first (Sankoff 1975).
  change_range count(const_tree_span tree) {
    if (states_.empty()) return {};
    const descendant_lists lists = descendants_of(tree, matrix.ntax);
    counts_.assign(lists.nodes() * states_.size(), {});
    for (int t = 0; t < matrix.ntax; ++t) fill_terminal(t);
    const std::vector<int> order = internal_nodes_root_first(lists, matrix.ntax);
    for (auto node = order.rbegin(); node != order.rend(); ++node) {
      for (const int d : lists.children(*node)) add(*node, d);
    }
    const auto root = row(matrix.ntax);
    for (std::size_t s = 0; s < states_.size(); ++s)
      if (costs_.root_states && !(costs_.root_states >> s & 1U)) root[s].steps += forbidden_cost;
    int steps = impossible;
    for (const subtree_count& c : root) steps = std::min(steps, c.steps);
    change_range range{impossible, 0};
    for (const subtree_count& c : root) {
      if (c.steps != steps) continue;
      range.least = std::min(range.least, c.least);
      range.most = std::max(range.most, c.most);
    }
    return range;
  }

 private:
  std::span<subtree_count> row(int node) {
    return std::span(counts_).subspan(at(node) * states_.size(), states_.size());
  }

  // The cell of an additive character is the range of its states.
  void fill_terminal(int taxon) {
    std::uint32_t cell_states = cell(taxon, character_);
    if (record_.is_sankoff) cell_states = costs_.in_matrix(costs_.cells[at(taxon)]);
    if (cell_states == 0 || says_nothing(character_, cell_states)) return;
    if (record_.additive) {
      const int lowest = std::countr_zero(cell_states);
      const int highest = 31 - std::countl_zero(cell_states);
      cell_states = ((2U << highest) - 1) & ~((1U << lowest) - 1);
    }
    for (std::size_t s = 0; s < states_.size(); ++s)
      if (!(cell_states >> states_[s] & 1U)) row(taxon)[s].steps = impossible;
  }

  void add(int node, int descendant) {
    for (std::size_t s = 0; s < states_.size(); ++s) {
      subtree_count best{impossible, 0, 0};
      for (std::size_t d = 0; d < states_.size(); ++d) {
        const subtree_count& below = row(descendant)[d];
        const int steps = below.steps + cost(s, d);
        if (steps > best.steps || below.steps >= impossible) continue;
        const int change = counts(s, d);
        const subtree_count here{steps, below.least + change, below.most + change};
        best = steps < best.steps ? here
                                  : subtree_count{steps, std::min(best.least, here.least),
                                                  std::max(best.most, here.most)};
      }
      subtree_count& sum = row(node)[s];
      sum.steps = std::min(impossible, sum.steps + best.steps);
      sum.least += best.least;
      sum.most += best.most;
    }
  }

  int cost(std::size_t from, std::size_t to) const {
    if (from == to) return 0;
    if (record_.is_sankoff) return costs_.of(static_cast<int>(from), static_cast<int>(to));
    return record_.additive ? std::abs(states_[from] - states_[to]) : 1;
  }
  int counts(std::size_t from, std::size_t to) const {
    return from != to && (from_ >> states_[from] & 1U) && (to_ >> states_[to] & 1U);
  }

  int character_;
  const character_record& record_;
  std::uint32_t from_;
  std::uint32_t to_;
  std::vector<int> states_;
  character_costs costs_;  // of a character that has some
  std::vector<subtree_count> counts_;
};

}  // namespace

change_range count_changes(const_tree_span tree, int character, std::uint32_t from,
                           std::uint32_t to) {
  const character_record& record = matrix.characters[at(character)];
  ALWAYS_CHECK(!record.is_continuous && record.type != landmark_data, "states of the character");
  return change_counter(character, from, to).count(tree);
}

}  // namespace zeb
