#include "mapping/branch_lengths.h"

#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/collapsing/collapsing.h"
#include "engine/plain/plain_optimisation.h"
#include "engine/plain/tree_scores.h"
#include "mapping/value_ranges.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

bool has_branch(const tree_shape& shape, int node) {
  return node != shape.root() && shape.has(node);
}

/// Calls `visit(node, branch_range)` for the branches of the tree.
template <class optimiser, class function>
void for_each_branch(const tree_shape& shape, const optimiser& o, function visit) {
  for (int v = 0; at(v) < shape.nodes(); ++v)
    if (has_branch(shape, v)) visit(v, o.branch(v));
}

}  // namespace

length_ranges branch_lengths(const tree_shape& shape, const std::vector<int>& characters,
                             polytomy_kind polytomies) {
  length_ranges lengths{std::vector<double>(shape.nodes(), no_length),
                        std::vector<double>(shape.nodes(), no_length)};
  for (int v = 0; at(v) < shape.nodes(); ++v)
    if (has_branch(shape, v)) lengths.least[at(v)] = lengths.most[at(v)] = 0;
  for (const int c : characters) {
    check_interrupt();
    const character_record& record = matrix.characters[at(c)];
    const double unit = record.weight / (record.is_continuous ? 1000.0 : 1.0);
    const auto add = [&](int node, const branch_range& range) {
      lengths.least[at(node)] += unit * static_cast<double>(range.least);
      lengths.most[at(node)] += unit * static_cast<double>(range.most);
    };
    if (record.is_continuous && polytomies == polytomy_kind::hard) {
      const value_ranges ranges(c, shape);
      if (ranges.any()) for_each_branch(shape, ranges, add);
      continue;
    }
    const state_model model(c);
    if (model.size() < 2) continue;
    for_each_branch(shape, state_optimiser(model, shape, polytomies), add);
  }
  return lengths;
}

std::vector<largest_changes> changes_in_size(const tree_shape& shape,
                                             const std::vector<int>& characters) {
  std::vector<largest_changes> changes(shape.nodes());
  for (const int c : characters) {
    check_interrupt();
    const value_ranges ranges(c, shape);
    if (!ranges.any()) continue;
    for_each_branch(shape, ranges, [&](int node, const branch_range& range) {
      largest_changes& largest = changes[at(node)];
      if (range.rise > largest.rise) {
        largest.rise = range.rise;
        largest.character_of_rise = c;
      }
      if (range.fall > largest.fall) {
        largest.fall = range.fall;
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
