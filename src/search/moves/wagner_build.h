// The growing tree: what the builder's files share. Private to them.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "base/arena.h"
#include "search/moves/branch_order.h"
#include "search/search_context.h"

namespace zeb {

class landmark_moves;

/// The constraints that a build obeys; null: none.
struct build_constraints {
  const constraint_rows* rows = nullptr;
  group_tables::closing closing = group_tables::closing::early;
};

struct wagner_build {
  wagner_build(search_context& search, const addition_settings& how,
               const build_constraints& obeyed);
  ~wagner_build();

  arena_scope memory;  // the spans below
  search_context& context;
  search_data& data;
  const addition_settings& additions;
  std::span<std::int32_t> order;       // taxa in order of addition
  std::span<std::int32_t> candidates;  // branches in the order in which they are tried
  std::span<std::int32_t> pairs;       // as `branches` lists them
  std::span<std::int32_t> scan_order;  // a random permutation of numbers of internal nodes
  branch_order branches;               // but for additions by clusters

  const bool fits;                     // implied weights: costs are fits
  const move_slots& slots;             // of the search
  std::optional<group_tables> groups;  // of the tree as it is, under constraints
  const group_tables::closing closing;
  bool stuck = false;                         // a taxon could go nowhere
  std::unique_ptr<landmark_moves> landmarks;  // null: there are none
  const bool more_to_ask;  // there are others than packed ones, or something may forbid places

  // The best place found for a taxon.
  double best = 0;
  int best_branch = -1;

  const word* down(int v) const { return data.sets[static_cast<std::size_t>(v)].down; }
  const word* branch(int v) const {
    return data.branch_base + static_cast<std::size_t>(v) * data.set_stride;
  }
  /// The tree of three taxa, with all its sets.
  void first_tree(int a, int b, int c);
  /// Fills `candidates` with the descendants of the internal nodes, which are taken in the order of
  /// `branches`, from its end, or by scan_order. `swapped`: second descendants before first ones.
  /// Returns their number.
  enum class walk { forward, backward, random };
  int list_candidates(walk way, bool swapped);
  /// Cost of adding `taxon` on the branch `v`: exact below `bound` (below or at it without
  /// implied weights).
  double cost_at(int taxon, int v, double bound) const;
  /// First listed item from `from` on where `words` cost less than `below`, with that cost; `count`
  /// for none. Item i is at `base + items[i] * data.set_stride`.
  int scan(const word* words, const word* base, std::span<const std::int32_t> items, int from,
           int count, double below, double* cost) const {
    if (fits)
      return data.kernels.fit.scan_pairs(words, base, data.set_stride, items.data(), from, count,
                                         data.layout, below, cost);
    std::int32_t steps = 0;
    const int i = data.kernels.scan_pairs(words, base, data.set_stride, items.data(), from, count,
                                          data.layout,
                                          static_cast<std::int32_t>(std::ceil(below)) - 1, &steps);
    *cost = steps;
    return i;
  }
  /// What the packed words don't know: adds the cost of wide characters. False where that reaches
  /// `below`, or the place is forbidden.
  bool others_allow(int taxon, join_side to, double below, double* cost) const {
    return !more_to_ask || all_others_allow(taxon, to, below, cost);
  }
  bool all_others_allow(int taxon, join_side to, double below, double* cost) const;
  /// May `taxon` go there, by what is bound?
  bool forbidden(int taxon, int v) const {
    return (groups && !groups->allows(taxon, v, closing)) ||
           (slots.forbids && slots.forbids(data, taxon, taxon, v));
  }
  /// Takes out of the first `count` candidates what constraints forbid; returns how many are left.
  int leave_out_forbidden(int taxon, int count);
  /// Makes the branch beside the outgroup the place to beat.
  void start_place(int taxon);
  /// Tries the candidates for `taxon` and keeps the best; only costs below `below` and the best so
  /// far replace a place.
  void try_candidates(int taxon, int count, double below);
  void find_place(int taxon);
  /// Puts the taxon there and repairs the sets.
  void attach_taxon(int taxon);
  void settle_landmarks(int joint);
  /// The same, and keeps `branches` up. Where constraints forbid the best place, all are forbidden:
  /// then the build is stuck.
  void place_taxon(int taxon);
  void shuffle_scan_order(int count);
  /// Reports; true when the search is to stop.
  bool stop_at(int position);
  /// The same between two of the many trials that a choice of taxa takes.
  bool stop_between_trials();
};

constexpr double unbounded = 1e9;  // above all costs

}  // namespace zeb
