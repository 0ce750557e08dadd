// What the taxa to come cost at the places of a partial tree, and where they may not go.
#pragma once

#include <cstdint>
#include <optional>

#include "base/indices.h"
#include "search/moves/group_tables.h"
#include "search/search_context.h"

namespace zeb {

/// Places are branches, named by the node below. The packed sets of a taxon are given as `words`,
/// since states that the tree lacks are taken as missing.
class place_costs {
 public:
  explicit place_costs(search_context& context);
  /// The tree in work has grown or shrunk.
  void read_tree();

  /// Exact up to `allowed`.
  double cost_at(int taxon, const word* words, int branch, double allowed) const;
  /// Implied weights: takes the steps of an addition into the counters, before it is made.
  void count_steps(int taxon, const word* words, int branch) const;
  /// Takes them off again, when the sets are as before.
  void uncount_steps(int taxon, const word* words, int branch) const;

  /// Drops the places where the taxon costs more than is allowed. Returns the least cost at those
  /// that stay.
  double drop_dear(int taxon, const word* words, double allowed, std::int32_t* places,
                   int* count) const;
  void drop_forbidden(int taxon, std::int32_t* places, int* count) const;

  const word* branch_sets(int v) const { return data_.branch_base + at(v) * data_.set_stride; }

 private:
  bool wide_allow(int taxon, int branch, double allowed, double* cost) const;
  bool is_forbidden(int taxon, int branch) const;

  search_context& context_;
  search_data& data_;
  const double rounding_;               // scores closer than this are one
  std::optional<group_tables> groups_;  // of the tree as it is, under constraints
};

}  // namespace zeb
