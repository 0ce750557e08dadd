// What moves cost in landmark characters: the tree in work with all points placed, and a clip of
// it.
//
// With the points where they are, joining two branches costs what the two new nodes add there: a
// quick estimate, too high by what the other nodes could give way. It gets better when nodes near
// the place of union move (`refined`).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/search_data.h"
#include "landmarks/joining_kernels.h"
#include "landmarks/position_kernels.h"
#include "search/landmarks/searched_landmarks.h"

namespace zeb {

/// Links of their own, as `data.tree` has them or with a move applied.
struct own_links {
  explicit own_links(const tree_arrays& tree)
      : anc(tree.anc.begin(), tree.anc.end()),
        sister(tree.sister.begin(), tree.sister.end()),
        first(tree.first.begin(), tree.first.end()),
        second(tree.second.begin(), tree.second.end()) {}
  tree_arrays arrays() { return {anc, sister, first, second}; }
  std::vector<std::int32_t> anc, sister, first, second;
};

/// A clip that is off the tree; see `swap_run` for the names.
struct landmark_clip {
  int clip = -1;
  int joint = -1;  // -1: the whole ingroup was clipped
  int home_root = -1;
  int home_first = -1;
};

class landmark_moves {
 public:
  /// Of the tree in work of `data`, when `place_tree` is called.
  explicit landmark_moves(const search_data& data);

  /// Places all points of the tree in work: from nothing, or going on from where they were.
  void place_tree(bool from_nothing);

  /// The clip was detached: the points of both halves move to where each half is shortest.
  void begin_clip(const landmark_clip& clip);
  /// What the two halves cost by themselves.
  double cost_of_halves() const { return cost_of_halves_; }
  /// What joining by the branch `u` of the clip to the branch `v` costs; above `limit`, something
  /// above it. May be called on several threads.
  double estimate(int u, int v, double limit) const;
  /// The same by configuration.
  std::vector<double> costs_by_configuration(int u, int v) const;
  /// The same after nodes within so many branches of the union moved so often.
  double refined(int u, int v, int depth, int rounds);
  /// The ancestors of the joined tree.
  std::vector<std::int32_t> joined_ancestors(int u, int v) const;

  // -- growing trees: of those the tree in work is one --
  void begin_growing();
  /// Places all points of the tree anew, and tells what this part of their lengths costs.
  double cost_of_growing_tree(double part);
  /// Places the points of a clade that isn't in the tree, before it is added by its root `top`.
  void place_clade(int top);
  /// Of a taxon or clade that isn't in the tree, as `estimate`.
  double cost_of_adding(int top, int v, double limit) const;
  /// It is about to be attached to the branch `v` by the node `joint`.
  void place_added(int top, int v, int joint);
  /// ... and was: nodes near it move, or all.
  void settle_added(int joint, int depth, int rounds, bool all_nodes);

 private:
  struct joined_ends {
    branch_ends own;
    branch_ends target;
  };
  joined_ends ends_of(int u, int v) const;
  branch_ends own_ends(int u) const;
  branch_ends added_ends(int top) const;
  branch_ends target_ends(int v) const;
  own_links joined(int u, int v) const;
  struct near_part;
  /// Puts the two halves of `joined_` together at that place.
  void place_union(int block, int u, int v);
  void move_near(int block, const node_walk& whole, const near_part& near, int rounds,
                 node_positions& positions) const;
  double cost_of(const std::vector<lane_values>& lengths) const;
  /// Of the halves, with what `added` says for each block.
  template <class function>
  std::vector<lane_values> joined_lengths(function added) const;
  /// What sets of points cost more by that.
  template <class function>
  double sets_joined(function added) const;
  void note_grown(int block, const node_walk& walk);
  lane_values added_lengths(int block, branch_ends own, branch_ends target) const;
  lane_values least_added(int block, branch_ends own, branch_ends target) const;
  std::size_t branches_of(int block) const { return at(block * data_.nodes) * block_lanes; }

  const search_data& data_;
  searched_landmarks& landmarks_;
  const point_blocks& points_;
  node_positions tree_;    // of the tree in work
  node_positions halves_;  // of the clipped one
  node_positions joined_;  // of one that is refined
  landmark_clip clip_;
  std::vector<std::uint8_t> in_both_;      // by block: lanes present in both halves
  std::vector<std::uint8_t> in_clade_;     // ... in the clade that is added
  std::vector<lane_values> half_lengths_;  // by block: of both halves together
  std::vector<double> branch_lengths_;     // of the halves, by block, node and lane
  double cost_of_halves_ = 0;
};

}  // namespace zeb
