// Bremer support (Bremer 1988): how much score must be given up before a group is lost; relative
// support: how little of the evidence for a group is left when the
// evidence against it is taken off; and combinations of both.
//
// What is measured is always the same, a pair of numbers for each group of a reference tree. Where
// trees without the group come from differs: a set of trees (bremer_trees.h), the neighbourhood of
// the reference (bremer_swap.h), or a search for each group (bremer_search.h). A tree that nobody
// found may cost less, so all of these are bounds from above, but for the searches that are exact.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/scores.h"
#include "consensus/group_tally.h"
#include "consensus/group_tree.h"
#include "trees/tree_record.h"

namespace zeb {

/// What is wanted.
struct bremer_settings {
  enum source_kind : int { from_trees, by_swapping, by_searching };
  enum measure_kind : int { absolute, relative, relative_within };
  enum combination_kind : int { none, power, product };

  int source = from_trees;
  bool add_excess = false;     // losing a group in a tree costs what the tree itself costs, too
  bool collapse_none = false;  // whatever the cut is
  int measure = absolute;      // relative_within: by trees within the absolute support only
  int combination = none;      // of absolute and relative support
  double deletion = 0.36;      // probability that a character is deleted, for `power`
  double factor = 1;           // absolute supports are divided by it, for `power`
  double cut = 0;              // groups with less are collapsed
  bool save = false;
  bool table = false;
  std::string search;  // the commands that look for trees without a group

  bool needs_relative() const { return measure != absolute || combination != none; }
};

/// The least that a tree without the group costs.
struct group_measure {
  double absolute = no_bound;  // in units of the score; no_bound: no tree without it was met
  double relative = no_bound;  // a fraction; likewise
  bool has_value = true;       // false for a group that no tree can lack
};

/// A tree without the group takes part: `excess` is its score less that of the reference.
void take_loss(group_measure& group, const bremer_settings& wanted, double excess, double relative);

/// The groups whose supports are wanted. The sets lie in the arena: make it within an arena_scope.
struct reference_groups {
  /// Taxa with a 1 in `absent` are cut off the tree. Branches with weight 0 (by node; may be empty)
  /// count as collapsed. Error without memory.
  reference_groups(const_tree_span tree, std::span<const std::uint8_t> absent,
                   std::span<const std::uint8_t> weights = {});

  group_tally tally;
  std::vector<group_measure> measures;  // by record of the tally
  std::vector<int> record_of_node;      // by node of the tree; -1 none
  std::vector<std::uint8_t> absent;     // by taxon
};

bool has_taxon(const group_record& group, int taxon);

/// Supports as they are shown.
struct bremer_result {
  std::vector<tree_node> tree;
  std::vector<double> values;          // by node; no_fraction where there is none
  std::vector<std::uint8_t> is_bound;  // by node: no tree without the group was met
  std::string title;
  std::vector<std::string> notes;
  int decimals = 0;
  bool brackets_bounds = false;  // "[N]" is at least N; else ">N" is more than N
};

/// What the settings make of what was measured. A group that was never lost has `bound` at least.
/// `source` is where the supports are from, as the title tells it.
bremer_result shown_supports(const reference_groups& groups, const bremer_settings& wanted,
                             const group_measure& bound, const std::string& source);

/// The text of a node's support on a diagram, and the same as a label in files, where brackets
/// would be a comment. Empty: none.
std::string support_text(const bremer_result& result, std::size_t node);
std::string support_label(const bremer_result& result, std::size_t node);

/// By node up to the last one, 0 where there is no support, for scripts.
std::vector<double> values_by_node(const bremer_result& result);

/// Decimals that scores and supports are shown with: none where scores are whole, unless `macfloat`
/// says how many.
int support_decimals();

}  // namespace zeb
