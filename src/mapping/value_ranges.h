// A continuous character on a tree with hard polytomies: which values its nodes have in most
// parsimonious reconstructions. All in thousandths.
#pragma once

#include <cstdint>

#include "engine/plain/range_optimisation.h"
#include "mapping/state_optimisation.h"
#include "mapping/tree_shape.h"

namespace zeb {

/// The largest that some most parsimonious reconstruction has along a branch.
struct size_change {
  std::int64_t rise = 0;
  std::int64_t fall = 0;
};

class value_ranges {
 public:
  /// The shape must outlive it.
  value_ranges(int character, const tree_shape& shape);

  /// Does any terminal have a value? If not, nothing else here has a meaning.
  bool any() const { return any_; }
  std::int64_t steps() const { return optimiser_.steps(0); }
  value_range down(int node) const { return optimiser_.down(node)[0]; }
  value_range final(int node) const { return optimiser_.final(node)[0]; }
  /// The values that the node may have where its ancestor has `above`.
  value_range following(int node, int above) const;
  /// Of the branch below the node, which isn't the root.
  branch_range branch(int node) const;
  size_change largest_change(int node) const;

 private:
  const tree_shape& shape_;
  range_optimiser optimiser_;
  bool any_ = false;
};

}  // namespace zeb
