#include "search/landmarks/landmark_moves.h"

#include <numeric>

#include "base/indices.h"
#include "engine/passes/links.h"
#include "landmarks/landmark_workers.h"
#include "landmarks/listed_walk.h"

namespace zeb {
namespace {

constexpr relaxation after_a_move = {12, 0.05, 1e-6, false};
constexpr relaxation after_a_clip = {5, 0.02, 1e-5, false};

tree_links links_of(const search_data& data, const tree_arrays& tree) {
  return {data.n, tree.anc.data(), tree.first.data(), tree.second.data()};
}

tree_base whole_base(const tree_arrays& tree) { return {0, tree.sister[0]}; }

unsigned lanes_in(const point_blocks& points, int block, const node_walk& walk) {
  unsigned lanes = 0;
  const auto add = [&](int v) {
    if (v >= 0 && v < points.terminals) lanes |= points.present(block, v);
  };
  add(walk.base.first);
  add(walk.base.second);
  for (const int v : walk.inner) {
    add(walk.links.first[v]);
    add(walk.links.second[v]);
  }
  return lanes;
}

void copy_lanes(const point_block& block, unsigned lanes, int from, int to,
                node_positions& positions) {
  const double* const there = positions.of(block, from);
  double* const here = positions.of(block, to);
  for (int i = 0; i < block.dimensions * block_lanes; ++i)
    if (lanes >> (i % block_lanes) & 1) here[i] = there[i];
}

void clear_lanes(unsigned lanes, lane_values& values) {
  for (int l = 0; l < block_lanes; ++l)
    if (lanes >> l & 1) values[at(l)] = 0;
}

double sum_of(const std::vector<double>& parts) {
  return std::accumulate(parts.begin(), parts.end(), 0.0);
}

}  // namespace

landmark_moves::landmark_moves(const search_data& data)
    : data_(data),
      landmarks_(*landmarks_in(data)),
      points_(landmarks_.blocks()),
      tree_(points_, data.nodes),
      halves_(points_, data.nodes),
      joined_(points_, data.nodes),
      in_both_(at(points_.count()), 0),
      in_clade_(at(points_.count()), 0),
      half_lengths_(at(points_.count())),
      branch_lengths_(branches_of(points_.count()), 0.0) {}

void landmark_moves::place_tree(bool anew) {
  const listed_walk whole(links_of(data_, data_.tree), whole_base(data_.tree));
  share_out(points_.count(), [&](int block) {
    relax_positions(points_, block, whole.walk, anew ? from_nothing : after_a_move, tree_);
  });
}

double landmark_moves::cost_of(const std::vector<lane_values>& lengths) const {
  double sum = 0;
  for (int block = 0; block < points_.count(); ++block)
    sum += landmarks_.cost(block, lengths[at(block)]);
  return sum + landmarks_.cost_of_sets(lengths);
}

template <class function>
std::vector<lane_values> landmark_moves::joined_lengths(function added) const {
  std::vector<lane_values> lengths = half_lengths_;
  for (int block = 0; block < points_.count(); ++block) {
    const lane_values more = added(block);
    for (std::size_t l = 0; l < block_lanes; ++l) lengths[at(block)][l] += more[l];
  }
  return lengths;
}

template <class function>
double landmark_moves::sets_joined(function added) const {
  if (!landmarks_.has_sets()) return 0;
  return landmarks_.cost_of_sets(joined_lengths(added)) - landmarks_.cost_of_sets(half_lengths_);
}

void landmark_moves::begin_clip(const landmark_clip& clip) {
  clip_ = clip;
  const tree_links links = links_of(data_, data_.tree);
  const tree_base main = clip.joint < 0 ? tree_base{0, -1} : whole_base(data_.tree);
  const tree_base own =
      clip.clip < data_.n ? tree_base{clip.clip, -1} : tree_base{clip.home_first, clip.home_root};
  const listed_walk main_walk(links, main);
  const listed_walk own_walk(links, own);
  std::vector<double> costs(at(points_.count()), 0);
  share_out(points_.count(), [&](int block) {
    const point_block& one = points_.blocks[at(block)];
    std::copy_n(tree_.of(one, 0), at(data_.nodes * one.dimensions) * block_lanes,
                halves_.of(one, 0));
    relax_positions(points_, block, main_walk.walk, after_a_clip, halves_);
    relax_positions(points_, block, own_walk.walk, after_a_clip, halves_);
    double* const branches = branch_lengths_.data() + branches_of(block);
    lane_values lengths = lengths_of(points_, block, main_walk.walk, halves_, branches);
    const lane_values of_clip = lengths_of(points_, block, own_walk.walk, halves_, branches);
    for (std::size_t l = 0; l < block_lanes; ++l) lengths[l] += of_clip[l];
    half_lengths_[at(block)] = lengths;
    costs[at(block)] = landmarks_.cost(block, lengths);
    in_both_[at(block)] = static_cast<std::uint8_t>(lanes_in(points_, block, main_walk.walk) &
                                                    lanes_in(points_, block, own_walk.walk));
  });
  cost_of_halves_ = sum_of(costs) + landmarks_.cost_of_sets(half_lengths_);
}

branch_ends landmark_moves::own_ends(int u) const {
  if (clip_.clip < data_.n) return {clip_.clip, -1};
  if (u == clip_.home_root) return {u, clip_.home_first};
  if (u == clip_.home_first) return {u, clip_.home_root};
  return {u, data_.tree.anc[at(u)]};
}

branch_ends landmark_moves::target_ends(int v) const {
  const int above = data_.tree.anc[at(v)];
  return {v, above == data_.n ? data_.tree.sister[at(v)] : above};
}

lane_values landmark_moves::added_lengths(int block, branch_ends own, branch_ends target) const {
  const point_block& one = points_.blocks[at(block)];
  lane_values added = joining_lengths(one, halves_, own, target);
  if (one.has_missing) clear_lanes(~unsigned{in_both_[at(block)]}, added);
  return added;
}

lane_values landmark_moves::least_added(int block, branch_ends own, branch_ends target) const {
  const point_block& one = points_.blocks[at(block)];
  const double* const lengths = branch_lengths_.data() + branches_of(block);
  lane_values added =
      least_joining_lengths(one, halves_, own, target, lengths + own.lower * block_lanes,
                            lengths + target.lower * block_lanes);
  if (one.has_missing) clear_lanes(~unsigned{in_both_[at(block)]}, added);
  return added;
}

/// Terminal 0 alone is joined to a branch of the clip as a terminal is to one of the main tree.
landmark_moves::joined_ends landmark_moves::ends_of(int u, int v) const {
  if (clip_.joint < 0) return {{0, -1}, own_ends(u)};
  return {own_ends(u), target_ends(v)};
}

double landmark_moves::estimate(int u, int v, double limit) const {
  const joined_ends ends = ends_of(u, v);
  double least = 0;
  for (int block = 0; block < points_.count() && limit < no_bound; ++block) {
    least += landmarks_.cost_added(block, half_lengths_[at(block)],
                                   least_added(block, ends.own, ends.target));
    if (least > limit) return least;
  }
  double sum = 0;
  for (int block = 0; block < points_.count() && sum <= limit; ++block)
    sum += landmarks_.cost_added(block, half_lengths_[at(block)],
                                 added_lengths(block, ends.own, ends.target));
  return sum + sets_joined([&](int block) { return added_lengths(block, ends.own, ends.target); });
}

std::vector<double> landmark_moves::costs_by_configuration(int u, int v) const {
  const joined_ends ends = ends_of(u, v);
  std::vector<double> costs(landmarks_.parts());
  const std::vector<lane_values> lengths =
      joined_lengths([&](int block) { return added_lengths(block, ends.own, ends.target); });
  for (int block = 0; block < points_.count(); ++block) {
    landmarks_.add_by_configuration(block, lengths[at(block)], 1, costs);
    landmarks_.add_by_configuration(block, half_lengths_[at(block)], -1, costs);
  }
  const std::vector<double> before = landmarks_.costs_by_set(half_lengths_);
  const std::vector<double> after = landmarks_.costs_by_set(lengths);
  for (std::size_t s = 0; s < before.size(); ++s)
    costs[costs.size() - before.size() + s] = after[s] - before[s];
  return costs;
}

own_links landmark_moves::joined(int u, int v) const {
  own_links links(data_.tree);
  const tree_arrays tree = links.arrays();
  tree_arrays changed = tree;
  if (u != clip_.home_root) reroot_links(changed, u, clip_.clip);
  if (clip_.joint >= 0) attach(changed, clip_.clip, clip_.joint, v);
  return links;
}

std::vector<std::int32_t> landmark_moves::joined_ancestors(int u, int v) const {
  return joined(u, v).anc;
}

void landmark_moves::place_union(int block, int u, int v) {
  const point_block& one = points_.blocks[at(block)];
  std::copy_n(halves_.of(one, 0), at(data_.nodes * one.dimensions) * block_lanes,
              joined_.of(one, 0));
  const branch_ends own = own_ends(u);
  if (clip_.joint < 0) {
    place_joint(one, {0, -1}, own, clip_.clip, -1, joined_);
    return;
  }
  const branch_ends target = target_ends(v);
  const int root = clip_.clip < data_.n ? -1 : clip_.clip;
  place_joint(one, own, target, clip_.joint, root, joined_);
  if (!one.has_missing) return;
  // Where one half lacks a point, the new nodes lie on the branch that was there.
  copy_lanes(one, ~unsigned{in_both_[at(block)]}, target.lower, clip_.joint, joined_);
  if (root >= 0) copy_lanes(one, ~unsigned{in_both_[at(block)]}, own.lower, root, joined_);
}

/// The part of a tree within so many branches of a node, and what it hangs from.
struct landmark_moves::near_part {
  near_part(const search_data& data, own_links& links, int node, int depth)
      : moves(at(data.nodes), 0) {
    const auto above = [&](int v) {
      return links.anc[at(v)] == data.n ? links.sister[at(v)] : links.anc[at(v)];
    };
    std::vector<std::int32_t> found = {node};
    moves[at(node)] = 1;
    for (std::size_t begin = 0, d = 0; d < at(depth) && begin < found.size(); ++d)
      for (const std::size_t end = found.size(); begin < end; ++begin)
        for (const int next :
             {above(found[begin]), links.first[at(found[begin])], links.second[at(found[begin])]}) {
          if (next < data.n || moves[at(next)]) continue;
          moves[at(next)] = 1;
          found.push_back(next);
        }
    int top = node;
    while (links.anc[at(top)] != data.n && moves[at(links.anc[at(top)])]) top = links.anc[at(top)];
    std::vector<std::int32_t> waiting = {top};
    while (!waiting.empty()) {
      const int v = waiting.back();
      waiting.pop_back();
      if (v < data.n || !moves[at(v)]) continue;
      inner.push_back(v);
      waiting.push_back(links.second[at(v)]);
      waiting.push_back(links.first[at(v)]);
    }
    walk = {links_of(data, links.arrays()), {above(top), top}, inner, moves};
  }
  near_part(const near_part&) = delete;
  near_part& operator=(const near_part&) = delete;
  std::vector<std::uint8_t> moves;
  std::vector<std::int32_t> inner;
  node_walk walk;
};

/// Where points are missing, nodes may have no place yet: then all move.
void landmark_moves::move_near(int block, const node_walk& whole, const near_part& near, int rounds,
                               node_positions& positions) const {
  const bool all = points_.blocks[at(block)].has_missing;
  relaxation how = after_a_clip;
  if (!all) how.rounds = rounds;
  relax_positions(points_, block, all ? whole : near.walk, how, positions);
}

double landmark_moves::refined(int u, int v, int depth, int rounds) {
  own_links links = joined(u, v);
  const tree_arrays tree = links.arrays();
  const listed_walk whole(links_of(data_, tree), whole_base(tree));
  const near_part near(data_, links, clip_.joint < 0 ? clip_.clip : clip_.joint, depth);
  std::vector<lane_values> lengths(at(points_.count()));
  share_out(points_.count(), [&](int block) {
    place_union(block, u, v);
    move_near(block, whole.walk, near, rounds, joined_);
    lengths[at(block)] = lengths_of(points_, block, whole.walk, joined_);
  });
  return cost_of(lengths) - cost_of_halves_;
}

// ---- growing trees ----

void landmark_moves::begin_growing() {
  const listed_walk whole(links_of(data_, data_.tree), whole_base(data_.tree));
  share_out(points_.count(), [&](int block) {
    relax_positions(points_, block, whole.walk, from_nothing, tree_);
    note_grown(block, whole.walk);
  });
}

void landmark_moves::note_grown(int block, const node_walk& walk) {
  half_lengths_[at(block)] = lengths_of(points_, block, walk, tree_);
  in_both_[at(block)] = static_cast<std::uint8_t>(lanes_in(points_, block, walk));
}

double landmark_moves::cost_of_growing_tree(double part) {
  begin_growing();
  std::vector<lane_values> lengths = half_lengths_;
  for (lane_values& block : lengths)
    for (double& length : block) length *= part;
  return cost_of(lengths);
}

/// A clade is added by the branch between the two descendants of its root.
branch_ends landmark_moves::added_ends(int top) const {
  if (top < data_.n) return {top, -1};
  return {data_.tree.first[at(top)], data_.tree.second[at(top)]};
}

void landmark_moves::place_clade(int top) {
  const branch_ends ends = added_ends(top);
  const listed_walk walk(links_of(data_, data_.tree), {ends.lower, ends.upper});
  share_out(points_.count(), [&](int block) {
    relax_positions(points_, block, walk.walk, from_nothing, tree_);
    in_clade_[at(block)] = static_cast<std::uint8_t>(lanes_in(points_, block, walk.walk));
  });
}

double landmark_moves::cost_of_adding(int top, int v, double limit) const {
  const branch_ends own = added_ends(top);
  const branch_ends target = target_ends(v);
  const auto added = [&](int block) {
    const point_block& one = points_.blocks[at(block)];
    lane_values lengths = joining_lengths(one, tree_, own, target);
    if (one.has_missing) {
      const unsigned lanes = top < data_.n ? points_.present(block, top) : in_clade_[at(block)];
      clear_lanes(~lanes | ~unsigned{in_both_[at(block)]}, lengths);
    }
    return lengths;
  };
  double sum = 0;
  for (int block = 0; block < points_.count() && sum <= limit; ++block)
    sum += landmarks_.cost_added(block, half_lengths_[at(block)], added(block));
  return sum + sets_joined(added);
}

void landmark_moves::place_added(int top, int v, int joint) {
  const branch_ends own = added_ends(top);
  for (const point_block& one : points_.blocks)
    place_joint(one, own, target_ends(v), joint, own.upper < 0 ? -1 : top, tree_);
}

void landmark_moves::settle_added(int joint, int depth, int rounds, bool all_nodes) {
  const listed_walk whole(links_of(data_, data_.tree), whole_base(data_.tree));
  own_links links(data_.tree);
  const near_part near(data_, links, joint, depth);
  share_out(points_.count(), [&](int block) {
    if (all_nodes)
      relax_positions(points_, block, whole.walk, from_nothing, tree_);
    else
      move_near(block, whole.walk, near, rounds, tree_);
    note_grown(block, whole.walk);
  });
}

}  // namespace zeb
