#include "mapping/state_changes.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "mapping/state_model.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// Of the reconstructions of a subtree with a given state at its root: the steps of the shortest,
/// and among those the least and the most changes asked for.
struct subtree_count {
  std::int64_t steps = 0;
  int least = 0;
  int most = 0;

  void add(const subtree_count& other) {
    steps = std::min(impossible_cost, steps + other.steps);
    least += other.least;
    most += other.most;
  }
  /// Becomes what is shorter; of equals what either allows.
  void join(const subtree_count& other) {
    if (other.steps > steps) return;
    if (other.steps < steps) {
      *this = other;
      return;
    }
    least = std::min(least, other.least);
    most = std::max(most, other.most);
  }
};
constexpr subtree_count none_yet = {impossible_cost, 0, 0};

bool holds(std::uint32_t states, int state) { return (states >> state & 1U) != 0; }

/// Dynamic programming from the tips: by node and state, the best of each descendant's states being
/// chosen by steps first (Sankoff and Rousseau 1975).
class change_counter {
 public:
  change_counter(const tree_shape& shape, int character, std::uint32_t from, std::uint32_t to,
                 polytomy_kind polytomies)
      : shape_(shape),
        model_(character),
        from_(from),
        to_(to),
        polytomies_(polytomies),
        n_(model_.size()),
        own_(shape.nodes() * n_),
        above_(own_) {}

  change_range count() {
    if (n_ == 0) return {};
    for (int t = 0; t < matrix.ntax; ++t)
      for (std::size_t s = 0; s < n_; ++s)
        if (!model_.may_have(t, s)) row(own_, t)[s] = none_yet;
    for (auto node = shape_.inner.rbegin(); node != shape_.inner.rend(); ++node) down_node(*node);
    subtree_count best = none_yet;
    for (std::size_t s = 0; s < n_; ++s) {
      subtree_count whole = row(own_, shape_.root())[s];
      whole.steps += model_.cost_at_root(s);
      best.join(whole);
    }
    return {best.least, best.most};
  }

 private:
  using counts = std::vector<subtree_count>;
  std::span<subtree_count> row(counts& table, int node) const {
    return std::span(table).subspan(at(node) * n_, n_);
  }

  void down_node(int node) {
    std::vector<std::span<const subtree_count>> below;
    for (const int d : shape_.lists.children(node)) {
      look_from_above(row(own_, d), row(above_, d));
      below.push_back(row(above_, d));
    }
    const bool soft = polytomies_ == polytomy_kind::soft && below.size() > 2 &&
                      below.size() <= most_branches_resolved;
    if (soft) return resolve(node, below);
    for (const auto& counts_below : below)
      for (std::size_t s = 0; s < n_; ++s) row(own_, node)[s].add(counts_below[s]);
  }

  void look_from_above(std::span<const subtree_count> own, std::span<subtree_count> above) const {
    for (std::size_t s = 0; s < n_; ++s) {
      above[s] = none_yet;
      for (std::size_t d = 0; d < n_; ++d) {
        const int change = counts_as_change(s, d);
        subtree_count along = {model_.cost(s, d), change, change};
        along.add(own[d]);
        above[s].join(along);
      }
    }
  }

  /// Binary trees of the descendants: of each set of them, put together from those of two parts.
  void resolve(int node, std::span<const std::span<const subtree_count>> below) {
    const std::size_t sets = std::size_t{1} << below.size();
    counts own(sets * n_, none_yet);
    counts above(own);
    for (std::size_t set = 1; set < sets; ++set) {
      if (std::has_single_bit(set)) {
        const auto& only = below[static_cast<std::size_t>(std::countr_zero(set))];
        std::copy(only.begin(), only.end(), &above[set * n_]);
        continue;
      }
      for (std::size_t part = (set - 1) & set; part > (set ^ part); part = (part - 1) & set)
        for (std::size_t s = 0; s < n_; ++s) {
          subtree_count both = above[part * n_ + s];
          both.add(above[(set ^ part) * n_ + s]);
          own[set * n_ + s].join(both);
        }
      look_from_above(std::span(own).subspan(set * n_, n_), std::span(above).subspan(set * n_, n_));
    }
    std::copy(own.end() - static_cast<std::ptrdiff_t>(n_), own.end(), row(own_, node).begin());
  }

  int counts_as_change(std::size_t from, std::size_t to) const {
    return from != to && holds(from_, model_.value(from)) && holds(to_, model_.value(to));
  }

  const tree_shape& shape_;
  state_model model_;
  std::uint32_t from_;
  std::uint32_t to_;
  polytomy_kind polytomies_;
  std::size_t n_;
  counts own_;    // by node, then state of the node
  counts above_;  // with the branch below the node, by state of its ancestor
};

bool is_discrete(int character) {
  const character_record& record = matrix.characters[at(character)];
  return !record.is_continuous && record.type != landmark_data;
}

}  // namespace

change_range count_changes(const tree_shape& shape, int character, std::uint32_t from,
                           std::uint32_t to, polytomy_kind polytomies) {
  ALWAYS_CHECK(is_discrete(character), "states of the character");
  return change_counter(shape, character, from, to, polytomies).count();
}

bool change_is_possible(int character, std::uint32_t from, std::uint32_t to) {
  const state_model model(character);
  std::uint32_t states = 0;
  for (std::size_t i = 0; i < model.size(); ++i) states |= std::uint32_t{1} << model.value(i);
  from &= states;
  to &= states;
  return from != 0 && to != 0 && (from != to || !std::has_single_bit(from));
}

}  // namespace zeb
