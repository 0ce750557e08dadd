#include "mapping/branch_lengths.h"

#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/collapsing/collapsing.h"
#include "engine/plain/plain_optimisation.h"
#include "engine/plain/tree_scores.h"
#include "landmarks/fermat.h"
#include "landmarks/landmark_scores.h"
#include "mapping/value_ranges.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// Calls `visit(node)` for the node above each branch of the tree.
template <class function>
void for_each_branch(const tree_shape& shape, function visit) {
  for (int v = 0; at(v) < shape.nodes(); ++v)
    if (v != shape.root() && shape.has(v)) visit(v);
}

template <class optimiser_type>
void add_lengths(const tree_shape& shape, const optimiser_type& optimiser, double unit,
                 length_ranges& lengths) {
  for_each_branch(shape, [&](int node) {
    const branch_range range = optimiser.branch(node);
    lengths.least[at(node)] += unit * static_cast<double>(range.least);
    lengths.most[at(node)] += unit * static_cast<double>(range.most);
  });
}

/// The ways of the points of landmark characters, with factors and weights. Under a polytomous base
/// there are none: an error.
void add_landmarks(const tree_shape& shape, const std::vector<int>& characters,
                   length_ranges& lengths) {
  std::vector<std::uint8_t> marks(at(matrix.nchar), 0);
  bool any = false;
  for (const int c : characters) {
    const bool landmarks = matrix.characters[at(c)].type == landmark_data;
    marks[at(c)] = landmarks;
    any = any || landmarks;
  }
  if (!any) return;
  for_each_landmark(
      shape.tree, marks, [&](const point_record& point, std::span<const landmark_point> positions) {
        const double unit = point.multiplier() * matrix.characters[at(point.character)].weight;
        for_each_branch(shape, [&](int node) {
          const landmark_point& here = positions[at(node)];
          const landmark_point& above = positions[at(shape.tree[at(node)])];
          if (is_missing(here) || is_missing(above)) return;
          lengths.least[at(node)] += unit * distance(here, above);
          lengths.most[at(node)] += unit * distance(here, above);
        });
      });
}

}  // namespace

length_ranges branch_lengths(const tree_shape& shape, const std::vector<int>& characters,
                             polytomy_kind polytomies) {
  length_ranges lengths{std::vector<double>(shape.nodes(), no_length),
                        std::vector<double>(shape.nodes(), no_length)};
  for_each_branch(shape, [&](int v) { lengths.least[at(v)] = lengths.most[at(v)] = 0; });
  for (const int c : characters) {
    check_interrupt();
    const character_record& record = matrix.characters[at(c)];
    if (record.type == landmark_data) continue;
    const double unit = record.weight / (record.is_continuous ? 1000.0 : 1.0);
    if (record.is_continuous && polytomies == polytomy_kind::hard) {
      const value_ranges ranges(c, shape);
      if (ranges.any()) add_lengths(shape, ranges, unit, lengths);
      continue;
    }
    const state_model model(c);
    if (model.size() > 1)
      add_lengths(shape, state_optimiser(model, shape, polytomies), unit, lengths);
  }
  add_landmarks(shape, characters, lengths);
  return lengths;
}

std::vector<largest_changes> changes_in_size(const tree_shape& shape,
                                             const std::vector<int>& characters) {
  std::vector<largest_changes> changes(shape.nodes());
  for (const int c : characters) {
    check_interrupt();
    const value_ranges ranges(c, shape);
    if (!ranges.any()) continue;
    for_each_branch(shape, [&](int node) {
      const size_change change = ranges.largest_change(node);
      largest_changes& largest = changes[at(node)];
      if (change.rise > largest.rise) {
        largest.rise = change.rise;
        largest.character_of_rise = c;
      }
      if (change.fall > largest.fall) {
        largest.fall = change.fall;
        largest.character_of_fall = c;
      }
    });
  }
  return changes;
}

std::vector<double> costs_of_collapsing(const tree_shape& shape, const std::vector<int>& characters,
                                        const fit_rules& rules) {
  std::vector<std::uint8_t> scored(at(matrix.nchar), 0);
  for (const int c : characters) scored[at(c)] = 1;
  plain_optimiser optimiser(scored);
  optimiser.optimise(shape.tree, polytomy_kind::hard);
  const double score = tree_score(optimiser, rules, scored);
  std::vector<double> costs(shape.nodes(), no_length);
  for (const int node : shape.inner) {
    // Landmarks need a base that is split in two.
    if (optimiser.has_landmarks() && shape.tree[at(node)] == shape.root()) continue;
    if (node == shape.root()) continue;
    check_interrupt();
    std::vector<tree_node> collapsed(shape.tree.begin(), shape.tree.end());
    std::vector<std::uint8_t> marks(collapsed.size(), 1);
    marks[at(node)] = 0;
    condense_tree(collapsed, marks);
    optimiser.optimise(collapsed, polytomy_kind::hard);
    costs[at(node)] = tree_score(optimiser, rules, scored) - score;
  }
  return costs;
}

}  // namespace zeb
