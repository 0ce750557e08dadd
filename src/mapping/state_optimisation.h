// What each value at each node costs a tree (Sankoff and Rousseau 1975), and so which values, and
// which changes along which branches, are found in some most parsimonious reconstruction.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/plain/range_optimisation.h"
#include "mapping/soft_polytomy.h"
#include "mapping/state_model.h"
#include "mapping/tree_shape.h"

namespace zeb {

/// Least and largest cost of the change along a branch, over all most parsimonious reconstructions.
/// Unweighted; thousandths if continuous.
struct branch_range {
  std::int64_t least = 0;
  std::int64_t most = 0;
};

/// Values are numbers in the model. The model and the shape must outlive it.
class state_optimiser {
 public:
  /// `allowed`, by node and value, may be empty: values of 0 are kept from internal nodes; at least
  /// one of each node must be allowed. Soft polytomies that can't be resolved are taken as hard.
  state_optimiser(const state_model& model, const tree_shape& shape,
                  polytomy_kind polytomies = polytomy_kind::hard,
                  std::span<const std::uint8_t> allowed = {});

  /// Cost of the tree, unweighted; thousandths if continuous.
  std::int64_t steps() const { return steps_; }
  /// Is the value among those that cost the subtree of the node least?
  bool in_down(int node, std::size_t value) const { return own(node, value) == least_own(node); }
  /// Does some most parsimonious reconstruction have it there?
  bool in_final(int node, std::size_t value) const;
  /// Can a node have `value` in a most parsimonious reconstruction where its ancestor has `above`?
  /// For descendants of hard polytomies: those of soft ones depend on each other.
  bool follows(int node, std::size_t above, std::size_t value) const {
    return model_.cost(above, value) + own(node, value) == from_above_[index(node, above)];
  }
  /// Of the branch below the node, which isn't the root.
  branch_range branch(int node) const;

 private:
  std::size_t index(int node, std::size_t value) const { return at(node) * n_ + value; }
  std::int64_t own(int node, std::size_t value) const { return own_[index(node, value)]; }
  std::int64_t least_own(int node) const;
  std::span<const std::int64_t> from_above(int node) const {
    return std::span(from_above_).subspan(index(node, 0), n_);
  }
  void forbid(std::span<const std::uint8_t> allowed);
  void look_from_above(int node);
  void down_node(int node);
  bool is_resolved(int node) const;
  std::vector<std::span<const std::int64_t>> branches_of(int node) const;
  void find_rest(int node);
  void find_rest_in_soft_polytomy(int node);
  void final_node(int node);

  const state_model& model_;
  const tree_shape& shape_;
  polytomy_kind polytomies_;
  std::size_t n_;
  std::int64_t steps_ = 0;
  // By node, then value: what the subtree costs if the node has it; what subtree and branch cost if
  // the ancestor has it; what everything else costs if the ancestor has it; what the tree costs if
  // the node has it.
  std::vector<std::int64_t> own_;
  std::vector<std::int64_t> from_above_;
  std::vector<std::int64_t> rest_;
  std::vector<std::int64_t> whole_;
};

}  // namespace zeb
