#include "landmarks/joining_kernels.h"

#include "landmarks/lane_points.h"

namespace zeb {
namespace {

/// The two new nodes of a joining of two branches.
template <int dims>
struct joint_places {
  lane_point<dims> own;
  lane_point<dims> target;
};

template <int dims>
joint_places<dims> places_of(const point_block& block, const node_positions& positions,
                             branch_ends own, branch_ends target) {
  joint_places<dims> made;
  const auto v = load_point<dims>(positions.of(block, target.lower));
  const auto w = load_point<dims>(positions.of(block, target.upper));
  const auto u = load_point<dims>(positions.of(block, own.lower));
  if (own.upper < 0) {
    made.own = u;
    made.target = fermat_of_lanes(u, v, w);
    return made;
  }
  const auto t = load_point<dims>(positions.of(block, own.upper));
  for (int d = 0; d < dims; ++d) made.target.at[d] = (v.at[d] + w.at[d]) / 2;
  for (int round = 0; round < 2; ++round) {
    made.own = fermat_of_lanes(made.target, u, t);
    made.target = fermat_of_lanes(made.own, v, w);
  }
  return made;
}

template <int dims>
lane_values lengths_of_joining(const point_block& block, const node_positions& positions,
                               branch_ends own, branch_ends target) {
  const joint_places<dims> made = places_of<dims>(block, positions, own, target);
  const auto v = load_point<dims>(positions.of(block, target.lower));
  const auto w = load_point<dims>(positions.of(block, target.upper));
  lanes added = between(made.own, made.target) + between(made.target, v) + between(made.target, w) -
                between(v, w);
  if (own.upper >= 0) {
    const auto u = load_point<dims>(positions.of(block, own.lower));
    const auto t = load_point<dims>(positions.of(block, own.upper));
    added += between(made.own, u) + between(made.own, t) - between(u, t);
  }
  lane_values lengths;
  store_lanes(lengths.data(), added);
  return lengths;
}

// A closed way around the ends of both branches follows each new branch at most twice, so all of
// them together are at least half as long.
template <int dims>
lane_values least_lengths(const point_block& block, const node_positions& positions,
                          branch_ends own, branch_ends target, const double* own_length,
                          const double* target_length) {
  const auto v = load_point<dims>(positions.of(block, target.lower));
  const auto w = load_point<dims>(positions.of(block, target.upper));
  const auto u = load_point<dims>(positions.of(block, own.lower));
  lanes around;
  if (own.upper < 0) {
    around = between(u, v) + between(u, w);
  } else {
    const auto t = load_point<dims>(positions.of(block, own.upper));
    const lanes one_way = between(u, v) + between(t, w);
    const lanes other_way = between(u, w) + between(t, v);
    around = (one_way > other_way ? one_way : other_way) - load_lanes(own_length);
  }
  lane_values lengths;
  store_lanes(lengths.data(), at_least((around - load_lanes(target_length)) * 0.5, 0));
  return lengths;
}

template <int dims>
void place_ends_of_joint(const point_block& block, branch_ends own, branch_ends target, int joint,
                         int root, node_positions& positions) {
  const joint_places<dims> made = places_of<dims>(block, positions, own, target);
  store_point(made.target, positions.of(block, joint));
  if (root >= 0) store_point(made.own, positions.of(block, root));
}

}  // namespace

ZEB_ALSO_FOR_WIDE_VECTORS
lane_values joining_lengths(const point_block& block, const node_positions& positions,
                            branch_ends own, branch_ends target) {
  return block.dimensions == 2 ? lengths_of_joining<2>(block, positions, own, target)
                               : lengths_of_joining<3>(block, positions, own, target);
}

ZEB_ALSO_FOR_WIDE_VECTORS
lane_values least_joining_lengths(const point_block& block, const node_positions& positions,
                                  branch_ends own, branch_ends target, const double* own_length,
                                  const double* target_length) {
  return block.dimensions == 2
             ? least_lengths<2>(block, positions, own, target, own_length, target_length)
             : least_lengths<3>(block, positions, own, target, own_length, target_length);
}

ZEB_ALSO_FOR_WIDE_VECTORS
void place_joint(const point_block& block, branch_ends own, branch_ends target, int joint, int root,
                 node_positions& positions) {
  if (block.dimensions == 2) {
    place_ends_of_joint<2>(block, own, target, joint, root, positions);
  } else {
    place_ends_of_joint<3>(block, own, target, joint, root, positions);
  }
}

}  // namespace zeb
