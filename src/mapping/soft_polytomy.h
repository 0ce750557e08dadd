// A polytomy that each character resolves as suits it best (Maddison 1989): for every set of its
// descendants, what the best binary tree of them costs.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "mapping/state_model.h"

namespace zeb {

class soft_polytomy {
 public:
  /// `from_above`: for each descendant, what its subtree and branch cost by the value at the lower
  /// end. Time goes with 3 to the power of their number.
  soft_polytomy(const state_model& model,
                std::span<const std::span<const std::int64_t>> from_above);

  /// What all of it costs by the value of the node itself, the base of the tree.
  std::span<const std::int64_t> own() const { return row(own_, sets_ - 1); }
  /// For each descendant: what everything but its subtree and branch costs, by the value at the
  /// lower end of that branch. `outside`: what is beyond the polytomy, by the node's value.
  std::vector<std::vector<std::int64_t>> rest(std::span<const std::int64_t> outside) const;

 private:
  std::span<const std::int64_t> row(const std::vector<std::int64_t>& table, std::size_t set) const {
    return std::span(table).subspan(set * n_, n_);
  }

  const state_model& model_;
  std::size_t n_;
  std::size_t sets_;
  // By set of descendants, then value: of the node at the base of their tree; of its ancestor.
  std::vector<std::int64_t> own_;
  std::vector<std::int64_t> above_;
};

}  // namespace zeb
