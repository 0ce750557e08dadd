#include "landmarks/point_search.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "landmarks/fermat.h"
#include "landmarks/landmark_tree.h"
#include "landmarks/point_minima.h"
#include "landmarks/point_optimiser.h"
#include "landmarks/point_records.h"

namespace zeb {
namespace {

constexpr int none = -1;

struct branch {
  int a = none;
  int b = none;
};

/// An unrooted binary tree: terminals 0 to n - 1, inner nodes n to 2n - 3.
class unrooted_tree {
 public:
  explicit unrooted_tree(std::span<const landmark_point> terminals)
      : terminals_(static_cast<int>(terminals.size())),
        neighbours_(2 * terminals.size(), {none, none, none}),
        positions_(terminals.begin(), terminals.end()) {
    positions_.resize(2 * terminals.size());
  }

  const landmark_point& position(int node) const { return positions_[at(node)]; }
  double length(const branch& one) const { return distance(position(one.a), position(one.b)); }

  void join(int a, int b) {
    *std::ranges::find(neighbours_[at(a)], none) = b;
    *std::ranges::find(neighbours_[at(b)], none) = a;
  }
  void part(int a, int b) {
    *std::ranges::find(neighbours_[at(a)], b) = none;
    *std::ranges::find(neighbours_[at(b)], a) = none;
  }
  /// A node in the middle of a branch.
  void put_on(int node, const branch& place) {
    part(place.a, place.b);
    join(node, place.a);
    join(node, place.b);
  }
  /// An inner node that has lost a neighbour goes; the branch in its place.
  branch take_out(int node) {
    const std::vector<int> ends = neighbours_of(node);
    part(node, ends[0]);
    part(node, ends[1]);
    join(ends[0], ends[1]);
    return {ends[0], ends[1]};
  }
  std::vector<int> neighbours_of(int node) const {
    std::vector<int> found;
    for (const int n : neighbours_[at(node)]) {
      if (n != none) found.push_back(n);
    }
    return found;
  }
  /// Of the part of the tree that holds `start`.
  std::vector<branch> branches_from(int start) const {
    std::vector<branch> found;
    std::vector<branch> open = {{none, start}};
    while (!open.empty()) {
      const branch one = open.back();
      open.pop_back();
      if (one.a != none) found.push_back(one);
      for (const int n : neighbours_of(one.b)) {
        if (n != one.a) open.push_back({one.b, n});
      }
    }
    return found;
  }
  bool is_terminal(int node) const { return node < terminals_; }

  /// Moves the inner nodes to where they should be; returns the length.
  double optimise(const point_record& point, point_optimiser& optimiser) {
    const int root = 2 * terminals_ - 1;
    std::vector<int> ancestors(positions_.size(), none);
    for (const branch& one : branches_from(0)) ancestors[at(one.b)] = one.a;
    const int first = neighbours_of(0)[0];
    ancestors[0] = ancestors[at(first)] = root;
    const landmark_tree tree = landmark_tree_of(std::move(ancestors), terminals_, root);
    constexpr int alone = 0;
    optimiser.optimise(tree, {&point, 1}, {&alone, 1});
    std::ranges::copy(optimiser.positions(0), positions_.begin());
    return optimiser.length(0);
  }
  void set_position(int node, const landmark_point& place) { positions_[at(node)] = place; }

 private:
  int terminals_;
  std::vector<std::array<int, 3>> neighbours_;
  std::vector<landmark_point> positions_;
};

/// What it costs to join two branches by a third one, with the nodes at their ends where they are.
double joining_cost(const unrooted_tree& tree, const branch& a, const branch& b) {
  const auto& pa = tree.position(a.a);
  const auto& qa = tree.position(a.b);
  const auto& pb = tree.position(b.a);
  const auto& qb = tree.position(b.b);
  landmark_point one = pa;
  landmark_point other = pb;
  for (int round = 0; round < 4; ++round) {
    one = fermat_point(pa, qa, other);
    other = fermat_point(pb, qb, one);
  }
  return distance(pa, one) + distance(qa, one) + distance(one, other) + distance(pb, other) +
         distance(qb, other) - tree.length(a) - tree.length(b);
}

double cost_of_terminal(const unrooted_tree& tree, const branch& place, int terminal) {
  return fermat_distance(tree.position(place.a), tree.position(place.b), tree.position(terminal)) -
         tree.length(place);
}

class point_search {
 public:
  point_search(const point_record& point, const landmark_settings& settings)
      : point_(point), optimiser_(settings), tree_(point.terminals) {}

  double run() {
    build();
    while (swap_once()) check_interrupt();
    return length_;
  }

 private:
  void build() {
    const int n = static_cast<int>(point_.terminals.size());
    const int hub = n;
    for (int t = 0; t < 3; ++t) tree_.join(t, hub);
    tree_.set_position(hub, fermat_point(tree_.position(0), tree_.position(1), tree_.position(2)));
    for (int t = 3; t < n; ++t) {
      branch best;
      double least = std::numeric_limits<double>::infinity();
      for (const branch& place : tree_.branches_from(hub)) {
        const double cost = cost_of_terminal(tree_, place, t);
        if (cost >= least) continue;
        least = cost;
        best = place;
      }
      const int node = n + t - 2;
      tree_.set_position(
          node, fermat_point(tree_.position(best.a), tree_.position(best.b), tree_.position(t)));
      tree_.put_on(node, best);
      tree_.join(node, t);
    }
    length_ = tree_.optimise(point_, optimiser_);
  }

  /// Takes the first move that makes the tree shorter; false where there is none.
  bool swap_once() {
    for (const branch& clip : tree_.branches_from(0)) {
      if (try_clip(clip)) return true;
    }
    return false;
  }

  bool try_clip(const branch& clip) {
    const unrooted_tree before = tree_;
    const double old_length = length_;
    tree_.part(clip.a, clip.b);
    double removed = before.length(clip);
    for (const int end : {clip.a, clip.b}) {
      if (tree_.is_terminal(end)) continue;
      for (const int n : tree_.neighbours_of(end)) removed += before.length({end, n});
      const branch closed = tree_.take_out(end);
      removed -= tree_.length(closed);
      sides_[end == clip.a ? 0 : 1] = closed.a;
    }
    const auto [one, other, gain] = best_joining(clip, removed);
    if (gain > 1e-6 * point_.span) {
      join(clip.a, one);
      join(clip.b, other);
      tree_.join(clip.a, clip.b);
      length_ = tree_.optimise(point_, optimiser_);
      if (length_ < old_length - 1e-7 * point_.span) return true;
    }
    tree_ = before;
    length_ = old_length;
    return false;
  }

  struct joining {
    branch one, other;
    double gain = 0;
  };
  /// A terminal that is alone on its side is joined as a branch of no length.
  joining best_joining(const branch& clip, double removed) const {
    const auto places = [&](int side, int end) {
      return tree_.is_terminal(end) ? std::vector<branch>{{end, end}}
                                    : tree_.branches_from(sides_[at(side)]);
    };
    joining best;
    for (const branch& one : places(0, clip.a)) {
      for (const branch& other : places(1, clip.b)) {
        const double gain = removed - joining_cost(tree_, one, other);
        if (gain > best.gain) best = {one, other, gain};
      }
    }
    return best;
  }
  void join(int end, const branch& place) {
    if (tree_.is_terminal(end)) return;
    tree_.set_position(end, tree_.position(place.a));
    tree_.put_on(end, place);
  }

  const point_record& point_;
  point_optimiser optimiser_;
  unrooted_tree tree_;
  double length_ = 0;
  std::array<int, 2> sides_{};  // a node on either side of the clip
};

}  // namespace

double shortest_tree_of_point(std::span<const landmark_point> terminals, int dimensions,
                              const landmark_settings& settings) {
  point_record point;
  point.dimensions = dimensions;
  point.terminals = distinct_points(terminals);
  landmark_settings own = settings;
  own.low_memory = true;
  measure_point(point, own);
  point.effort = point_effort::full;
  if (point.terminals.size() < 4) return largest_triplet(point.terminals);
  return point_search(point, own).run();
}

}  // namespace zeb
