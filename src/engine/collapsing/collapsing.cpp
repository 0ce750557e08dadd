// The full collapsing rules, on trees of the buffer.
#include "engine/collapsing/collapsing.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "engine/hooks.h"
#include "engine/plain/plain_optimisation.h"
#include "matrix/matrix.h"
#include "trees/constraints/constraint_test.h"

namespace zeb {

collapsing_settings collapsing;

namespace {

/// Does a range tell the node from its ancestor? As the sets of an additive character do.
bool range_tells(const value_range& above, const value_range& own, int rule) {
  switch (rule) {
    case 1:
      return above.low < own.low || above.high > own.high;
    case 2:
      return above != own;
    default:
      return above.high < own.low || own.high < above.low;
  }
}

bool set_tells(std::uint32_t above, std::uint32_t own, int rule) {
  switch (rule) {
    case 1:  // some reconstruction has a change: the ancestor may have a state that costs more
      return (above & ~own) != 0;
    case 2:
      return above != own;
    default:  // every reconstruction has one
      return (above & own) == 0;
  }
}

/// Does some character tell the node from its ancestor under this rule? Rule 1 looks at what costs
/// the node's subtree least, the others at both ends in the whole tree.
bool branch_stays(const plain_slice& sets, int node, int ancestor, int rule) {
  const auto above = sets.final(ancestor);
  const auto own = rule == 1 ? sets.down(node) : sets.final(node);
  for (std::size_t i = 0; i < above.size(); ++i)
    if (set_tells(above[i], own[i], rule)) return true;
  const auto costs_above = sets.with_costs().final(ancestor);
  const auto own_costs = rule == 1 ? sets.with_costs().down(node) : sets.with_costs().final(node);
  for (std::size_t i = 0; i < costs_above.size(); ++i)
    if (set_tells(costs_above[i], own_costs[i], rule)) return true;
  const range_optimiser& ranges = sets.ranges();
  const auto range_above = ranges.final(ancestor);
  const auto own_range = rule == 1 ? ranges.down(node) : ranges.final(node);
  for (std::size_t i = 0; i < range_above.size(); ++i)
    if (range_tells(range_above[i], own_range[i], rule)) return true;
  return false;
}

void mark_by_rule(plain_optimiser& sets, const_tree_span tree, int rule,
                  std::span<std::uint8_t> marks) {
  const int ntax = matrix.ntax;
  const int limit = node_limit(tree, ntax);
  for (int v = ntax + 1; v < limit; ++v) marks[at(v)] = 0;
  sets.optimise(tree, [&](const plain_slice& slice) {
    for (int v = ntax + 1; v < limit; ++v)
      if (!marks[at(v)]) marks[at(v)] = branch_stays(slice, v, tree[at(v)], rule);
  });
}

/// Removes the nodes marked 0; `numbers` (may be null) gets the new number of each kept node.
void remove_marked(tree_span tree, std::span<const std::uint8_t> marks, std::vector<int>* numbers) {
  const int ntax = matrix.ntax;
  const int limit = node_limit(tree, ntax);
  std::vector<int> number(tree.size(), -1);
  int next = ntax;
  for (int v = 0; v < limit; ++v)
    if (v < ntax)
      number[at(v)] = v;
    else if (v == ntax || marks[at(v)])
      number[at(v)] = next++;
  std::vector<tree_node> result(tree.size(), 0);
  for (int v = 0; v < limit; ++v) {
    if (number[at(v)] < 0 || v == ntax || (v < ntax && is_absent(tree, v))) continue;
    int a = tree[at(v)];
    while (number[at(a)] < 0) a = tree[at(a)];
    result[at(number[at(v)])] = number[at(a)];
  }
  result[at(ntax)] = next;
  for (std::size_t i = 0; i < tree.size(); ++i) tree[i] = result[i];
  if (numbers) *numbers = std::move(number);
}

/// Rule 4: branches whose ends may have the same sets go first; on the polytomous tree that is
/// left, a branch stays only if a change on it is forced in all reconstructions.
void mark_by_rule_4(plain_optimiser& sets, const_tree_span tree, std::span<std::uint8_t> marks) {
  mark_by_rule(sets, tree, 2, marks);
  std::vector<tree_node> collapsed(tree.begin(), tree.end());
  std::vector<int> number;
  remove_marked(collapsed, marks, &number);
  std::vector<std::uint8_t> forced(tree.size(), 1);
  mark_by_rule(sets, collapsed, 3, forced);
  for (int v = matrix.ntax + 1; v < node_limit(tree, matrix.ntax); ++v)
    if (marks[at(v)]) marks[at(v)] = forced[at(number[at(v)])];
}

/// Characters that count, landmarks or all others.
std::vector<std::uint8_t> judged_characters(bool landmarks) {
  std::vector<std::uint8_t> marks = scored_characters();
  for (int c = 0; c < matrix.nchar; ++c)
    if ((matrix.characters[at(c)].type == landmark_data) != landmarks) marks[at(c)] = 0;
  return marks;
}

/// Under all rules a branch stays along which a landmark moves.
void mark_by_landmarks(const_tree_span tree, std::span<std::uint8_t> marks) {
  const std::vector<std::uint8_t> landmarks = judged_characters(true);
  if (std::ranges::any_of(landmarks, [](std::uint8_t mark) { return mark != 0; }))
    hooks_of_engine.mark_moved_landmarks(tree, landmarks, marks);
}

void mark_tree(plain_optimiser& sets, const_tree_span tree, int rule,
               std::span<std::uint8_t> marks) {
  if (rule == 4)
    mark_by_rule_4(sets, tree, marks);
  else
    mark_by_rule(sets, tree, rule, marks);
  mark_by_landmarks(tree, marks);
}

/// The tree without the ignored taxa is judged. A node of which a single descendant is left there
/// isn't in it, and goes: the branch below it decides.
void mark_without(plain_optimiser& sets, const_tree_span tree, int rule,
                  std::span<const std::uint8_t> ignored, std::span<std::uint8_t> marks) {
  const int ntax = matrix.ntax;
  const int limit = node_limit(tree, ntax);
  std::vector<int> ancestors(at(limit), -1);
  int counted = 0;
  for (int v = 0; v < limit; ++v) {
    if (v == ntax || (v < ntax && (is_absent(tree, v) || ignored[at(v)]))) continue;
    ancestors[at(v)] = tree[at(v)];
    counted += v < ntax;
  }
  for (int v = ntax + 1; v < limit; ++v) marks[at(v)] = 0;
  if (counted < 3) return;  // no branch divides them
  std::vector<tree_node> left(tree.size(), 0);
  std::vector<int> number;
  record_from_ancestors(ancestors, left, ntax, &number);
  std::vector<std::uint8_t> stays(tree.size(), 0);
  mark_tree(sets, left, rule, stays);
  for (int v = ntax + 1; v < limit; ++v)
    if (number[at(v)] > ntax) marks[at(v)] = stays[at(number[at(v)])];
}

}  // namespace

struct branch_judge::state {
  int rule;
  std::vector<std::uint8_t> ignored;
  std::optional<plain_optimiser> sets;  // rules 1 to 4
  constraint_test protected_groups;
  std::vector<std::uint8_t> marks;  // scratch
};

branch_judge::branch_judge(int rule, std::span<const std::uint8_t> ignored_taxa)
    : state_(new state{rule, {ignored_taxa.begin(), ignored_taxa.end()}, {}, {}, {}}) {
  if (rule >= 1 && rule <= 4) state_->sets.emplace(judged_characters(false), ignored_taxa);
  if (rule > 4 && !hooks_of_engine.collapse_by_swapping)
    error_end("Internal error: called swap-collapsing without having assigned memory!");
}

branch_judge::~branch_judge() = default;

void branch_judge::mark(const_tree_span tree, std::span<std::uint8_t> marks) {
  for (std::uint8_t& m : marks) m = 1;
  if (state_->rule == 0) return;
  mark_by_rule_in_force(tree, marks);
  if (constraints.active) state_->protected_groups.protect(tree, marks);
}

void branch_judge::mark_by_rule_in_force(const_tree_span tree, std::span<std::uint8_t> marks) {
  if (state_->rule > 4)
    hooks_of_engine.collapse_by_swapping(tree, state_->rule == 6, marks, state_->ignored);
  else if (state_->ignored.empty())
    mark_tree(*state_->sets, tree, state_->rule, marks);
  else
    mark_without(*state_->sets, tree, state_->rule, state_->ignored, marks);
}

void branch_judge::condense(tree_span tree) {
  state_->marks.resize(tree.size());
  mark(tree, state_->marks);
  condense_tree(tree, state_->marks);
}

void collapse_tree(const_tree_span tree, std::span<std::uint8_t> marks,
                   std::span<const std::uint8_t> ignored_taxa) {
  branch_judge(collapsing.rule, ignored_taxa).mark(tree, marks);
}

void condense_tree(tree_span tree, std::span<const std::uint8_t> marks) {
  remove_marked(tree, marks, nullptr);
  normalise_tree(tree, matrix.ntax);
}

}  // namespace zeb
