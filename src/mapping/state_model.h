// One character as its reconstructions see it: the values that nodes may have, what changes between
// them cost, and which of them the terminals have.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

#include "matrix/costs/character_costs.h"

namespace zeb {

/// A sum of costs that can't be; twice as much is still within the type.
constexpr std::int64_t impossible_cost = std::numeric_limits<std::int64_t>::max() / 8;

/// Values are numbered from 0, in ascending order. Landmark characters have no such model.
class state_model {
 public:
  /// All kinds but landmarks. A continuous character has the ends of its terminals' ranges as
  /// values: no reconstruction is shorter for having others, and none of its branches longer.
  explicit state_model(int character);

  int character() const { return character_; }
  /// None where no terminal says anything.
  std::size_t size() const { return values_.size(); }
  /// The state of the matrix, or thousandths of a continuous character.
  int value(std::size_t i) const { return values_[i]; }
  std::int64_t cost(std::size_t from, std::size_t to) const {
    if (from == to) return 0;
    if (is_unordered_) return 1;
    return has_costs_ ? costs_.of(static_cast<int>(from), static_cast<int>(to))
                      : std::abs(values_[from] - values_[to]);
  }
  bool is_unordered() const { return is_unordered_; }
  /// Changes cost the difference of the values.
  bool is_ordered() const { return !is_unordered_ && !has_costs_; }
  /// What the value costs at the root beside what it costs the branches.
  std::int64_t cost_at_root(std::size_t i) const;
  /// May the terminal have the value? A cell that says nothing may have any.
  bool may_have(int taxon, std::size_t i) const {
    return cells_[static_cast<std::size_t>(taxon) * size() + i] != 0;
  }
  /// Does the place of the root matter: some cost differs from its reverse, or the root may have
  /// some states only.
  bool is_rooted() const { return has_costs_ && costs_.is_rooted(); }

 private:
  void take_costs();
  void take_states();
  void take_ranges();

  int character_;
  bool is_unordered_ = false;
  bool has_costs_ = false;
  character_costs costs_;  // where it has costs
  std::vector<int> values_;
  std::vector<std::uint8_t> cells_;  // by taxon, then value
};

}  // namespace zeb
