#include "landmarks/position_kernels.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "landmarks/lane_points.h"

namespace zeb {
namespace {

constexpr double next_to_nothing = 1e-300;  // keeps what weighs nothing from dividing nothing

template <int dims>
double squared(const double* a, const double* b, int lane) {
  double sum = 0;
  for (int d = 0; d < dims; ++d) {
    const double apart = a[d * block_lanes + lane] - b[d * block_lanes + lane];
    sum += apart * apart;
  }
  return sum;
}

/// What the least-squares walk knows of a node from below: it costs `stiffness` times the square of
/// the distance from `mean`.
struct walk_memory {
  walk_memory(int nodes, int dims)
      : stride(at(dims + 2) * block_lanes), values(at(nodes) * stride, 0.0) {}
  double* stiffness(int node) { return values.data() + at(node) * stride; }
  double* above(int node) { return stiffness(node) + block_lanes; }  // weight of the branch above
  double* mean(int node) { return stiffness(node) + 2 * block_lanes; }
  std::size_t stride;
  std::vector<double> values;
};

template <int dims>
class block_relaxation {
 public:
  block_relaxation(const point_blocks& points, int number, const node_walk& walk,
                   node_positions& positions)
      : points_(points),
        block_(points.blocks[at(number)]),
        number_(number),
        walk_(walk),
        positions_(positions),
        memory_(positions.nodes(), dims) {
    if (block_.has_missing && walk_.moves.empty()) count_present();
  }

  void run(const relaxation& how) {
    if (walk_.base.second < 0) return;
    double floor = how.first_floor;
    const double shrink =
        how.rounds > 1 ? std::pow(how.last_floor / how.first_floor, 1.0 / (how.rounds - 1)) : 1;
    for (int round = 0; round < how.rounds; ++round) {
      weigh_branches(how.from_nothing && round == 0, floor);
      go_down();
      go_up();
      if (!(how.from_nothing && round == 0)) floor *= shrink;
    }
    if (!below_.empty()) place_the_others();
  }

 private:
  bool is_terminal(int v) const { return v < walk_.links.terminals; }
  bool stays(int v) const {
    return is_terminal(v) || (!walk_.moves.empty() && !walk_.moves[at(v)]);
  }
  double* of(int v) { return positions_.of(block_, v); }

  /// Lanes that have a terminal below each node, as bits, and in the walk as a whole.
  void count_present() {
    below_.assign(at(positions_.nodes()), 0);
    for (std::size_t i = walk_.inner.size(); i-- > 0;) {
      const int v = walk_.inner[i];
      below_[at(v)] = static_cast<std::uint8_t>(lanes_below(walk_.links.first[v]) |
                                                lanes_below(walk_.links.second[v]));
    }
    // A branch counts for a lane where terminals are on both of its sides. From above:
    const int a = walk_.base.first;
    const int b = walk_.base.second;
    beyond_.assign(at(positions_.nodes()), 0);
    if (b < 0) return;
    beyond_[at(a)] = lanes_below(b);
    beyond_[at(b)] = lanes_below(a);
    for (const int v : walk_.inner) {
      const int x = walk_.links.first[v];
      const int y = walk_.links.second[v];
      beyond_[at(x)] = static_cast<std::uint8_t>(beyond_[at(v)] | lanes_below(y));
      beyond_[at(y)] = static_cast<std::uint8_t>(beyond_[at(v)] | lanes_below(x));
    }
  }
  std::uint8_t lanes_below(int v) const {
    return is_terminal(v) ? points_.present(number_, v) : below_[at(v)];
  }
  std::uint8_t lanes_of_branch(int v) const {
    return static_cast<std::uint8_t>(lanes_below(v) & beyond_[at(v)]);
  }

  void weigh(int v, int other, bool evenly, double floor) {
    double* const weight = memory_.above(v);
    const double* const a = of(v);
    const double* const b = of(other);
    if (evenly) {
      for (int l = 0; l < block_lanes; ++l) weight[l] = 1;
    } else {
      for (int l = 0; l < block_lanes; ++l) {
        const double least = floor * block_.span[at(l)];
        weight[l] = 1 / std::sqrt(squared<dims>(a, b, l) + least * least);
      }
    }
    if (below_.empty()) return;
    const unsigned counts = lanes_of_branch(v);
    for (int l = 0; l < block_lanes; ++l)
      if ((counts >> l & 1) == 0) weight[l] = 0;
  }

  void weigh_branches(bool evenly, double floor) {
    for (const int v : walk_.inner) {
      weigh(walk_.links.first[v], v, evenly, floor);
      weigh(walk_.links.second[v], v, evenly, floor);
    }
    weigh(walk_.base.first, walk_.base.second, evenly, floor);
    std::copy_n(memory_.above(walk_.base.first), block_lanes, memory_.above(walk_.base.second));
  }

  /// Adds what `child` says of the node above it.
  void add_child(int child, double* stiffness, double* sum) {
    const double* const weight = memory_.above(child);
    const bool fixed = stays(child);
    const double* const mean = fixed ? of(child) : memory_.mean(child);
    double through[block_lanes];
    if (fixed) {
      for (int l = 0; l < block_lanes; ++l) through[l] = weight[l];
    } else {
      const double* const own = memory_.stiffness(child);
      for (int l = 0; l < block_lanes; ++l)
        through[l] = weight[l] * own[l] / (weight[l] + own[l] + next_to_nothing);
    }
    for (int l = 0; l < block_lanes; ++l) stiffness[l] += through[l];
    for (int d = 0; d < dims; ++d)
      for (int l = 0; l < block_lanes; ++l)
        sum[d * block_lanes + l] += through[l] * mean[d * block_lanes + l];
  }

  void go_down() {
    for (std::size_t i = walk_.inner.size(); i-- > 0;) {
      const int v = walk_.inner[i];
      double stiffness[block_lanes] = {};
      double sum[dims * block_lanes] = {};
      add_child(walk_.links.first[v], stiffness, sum);
      add_child(walk_.links.second[v], stiffness, sum);
      double* const mean = memory_.mean(v);
      double* const own = memory_.stiffness(v);
      for (int l = 0; l < block_lanes; ++l) own[l] = stiffness[l];
      for (int d = 0; d < dims; ++d)
        for (int l = 0; l < block_lanes; ++l)
          mean[d * block_lanes + l] = sum[d * block_lanes + l] / (stiffness[l] + next_to_nothing);
    }
  }

  /// Puts `v` where the branch to a placed node and what is below it balance.
  void place(int v, const double* other) {
    if (stays(v)) return;
    const double* const weight = memory_.above(v);
    const double* const own = memory_.stiffness(v);
    const double* const mean = memory_.mean(v);
    double* const here = of(v);
    for (int d = 0; d < dims; ++d)
      for (int l = 0; l < block_lanes; ++l) {
        const int i = d * block_lanes + l;
        here[i] =
            (weight[l] * other[i] + own[l] * mean[i]) / (weight[l] + own[l] + next_to_nothing);
      }
  }

  /// The base first: its first end, by what is below it and beyond it.
  void place_base() {
    const int a = walk_.base.first;
    const int b = walk_.base.second;
    if (stays(a)) return;
    double stiffness[block_lanes];
    double sum[dims * block_lanes];
    const double* const own = memory_.stiffness(a);
    const double* const mean = memory_.mean(a);
    for (int l = 0; l < block_lanes; ++l) stiffness[l] = own[l];
    for (int d = 0; d < dims; ++d)
      for (int l = 0; l < block_lanes; ++l)
        sum[d * block_lanes + l] = own[l] * mean[d * block_lanes + l];
    add_child(b, stiffness, sum);
    double* const here = of(a);
    for (int d = 0; d < dims; ++d)
      for (int l = 0; l < block_lanes; ++l)
        here[d * block_lanes + l] = sum[d * block_lanes + l] / (stiffness[l] + next_to_nothing);
  }

  void go_up() {
    place_base();
    place(walk_.base.second, of(walk_.base.first));
    for (const int v : walk_.inner) {
      place(walk_.links.first[v], of(v));
      place(walk_.links.second[v], of(v));
    }
  }

  void copy_lanes(unsigned lanes, int from, int to) {
    if (is_terminal(to) && points_.present(number_, to) & lanes)
      lanes &= ~static_cast<unsigned>(points_.present(number_, to));
    for (int l = 0; l < block_lanes; ++l)
      if (lanes >> l & 1)
        for (int d = 0; d < dims; ++d) of(to)[d * block_lanes + l] = of(from)[d * block_lanes + l];
  }
  unsigned lanes_placed(int v) const {
    unsigned lanes = lanes_of_branch(v);
    if (!is_terminal(v))
      lanes |= lanes_of_branch(walk_.links.first[v]) | lanes_of_branch(walk_.links.second[v]);
    else
      lanes |= points_.present(number_, v);
    return lanes;
  }

  /// Nodes without a branch that counts take over the place of their nearest neighbour.
  void place_the_others() {
    for (std::size_t i = walk_.inner.size(); i-- > 0;) {
      const int v = walk_.inner[i];
      for (const int child : {walk_.links.first[v], walk_.links.second[v]})
        copy_lanes(lanes_below(child) & ~lanes_placed(v), child, v);
    }
    const int a = walk_.base.first;
    const int b = walk_.base.second;
    copy_lanes(~unsigned{lanes_below(a)}, b, a);
    copy_lanes(~unsigned{lanes_below(b)}, a, b);
    for (const int v : walk_.inner)
      for (const int child : {walk_.links.first[v], walk_.links.second[v]})
        copy_lanes(~unsigned{lanes_below(child)}, v, child);
  }

  const point_blocks& points_;
  const point_block& block_;
  const int number_;
  const node_walk& walk_;
  node_positions& positions_;
  walk_memory memory_;
  std::vector<std::uint8_t> below_;   // by node: lanes with a terminal there or below
  std::vector<std::uint8_t> beyond_;  // ... on the other side of the branch above
};

template <int dims>
lane_values lengths(const point_block& block, const node_walk& walk,
                    const node_positions& positions, double* of_branches) {
  lane_values sum{};
  if (walk.base.second < 0) return sum;
  // Nodes that a lane doesn't call for lie on others, so their branches have no length.
  lanes total{};
  const auto add = [&](int lower, int upper) {
    const lanes length = between(load_point<dims>(positions.of(block, lower)),
                                 load_point<dims>(positions.of(block, upper)));
    if (of_branches) store_lanes(of_branches + lower * block_lanes, length);
    total += length;
  };
  for (const int v : walk.inner) {
    add(walk.links.first[v], v);
    add(walk.links.second[v], v);
  }
  add(walk.base.first, walk.base.second);
  if (of_branches)
    std::copy_n(of_branches + walk.base.first * block_lanes, block_lanes,
                of_branches + walk.base.second * block_lanes);
  store_lanes(sum.data(), total);
  return sum;
}

}  // namespace

ZEB_ALSO_FOR_WIDE_VECTORS
void relax_positions(const point_blocks& points, int block, const node_walk& walk,
                     const relaxation& how, node_positions& positions) {
  if (points.blocks[at(block)].dimensions == 2) {
    block_relaxation<2>(points, block, walk, positions).run(how);
  } else {
    block_relaxation<3>(points, block, walk, positions).run(how);
  }
}

ZEB_ALSO_FOR_WIDE_VECTORS
lane_values lengths_of(const point_blocks& points, int block, const node_walk& walk,
                       const node_positions& positions, double* of_branches) {
  const point_block& own = points.blocks[at(block)];
  return own.dimensions == 2 ? lengths<2>(own, walk, positions, of_branches)
                             : lengths<3>(own, walk, positions, of_branches);
}

}  // namespace zeb
