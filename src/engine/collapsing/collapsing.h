// Branch collapsing: when a branch counts as absent. Full rules judge a tree of the buffer by an
// optimisation of their own over the matrix; quick rules judge the tree in work of a search by the
// node sets that are there already.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "trees/tree_record.h"

namespace zeb {

struct collapsing_settings {
  int rule = 0;            // 0 none, 1 "rule 3", 2 amb, 3 "rule 1", 4 "rule 4", 5 SPR, 6 TBR
  bool temporary = true;   // collapse temporarily for consensus calculation
  bool automatic = false;  // condense after each search
  bool quick = true;       // `qcollapse`: skip moves within polytomies during a swap
};
extern collapsing_settings collapsing;  // written by the collapse commands only

/// Judges the branches of trees of the buffer (matrix numbering; polytomies and absent taxa
/// allowed). What it needs of the matrix is read once: the settings of characters must not change
/// while it lives.
class branch_judge {
 public:
  /// `ignored_taxa` (by matrix row, may be empty) are left out of the judgement: under rules 1 to 4
  /// trees are judged as if pruned of them, and of nodes that come to stand for one branch the
  /// lowest may stay; under rules 5 and 6 clades of them alone aren't moved. Errors for kinds of
  /// characters that can't be optimised, or searched, yet.
  explicit branch_judge(int rule, std::span<const std::uint8_t> ignored_taxa = {});
  ~branch_judge();
  branch_judge(const branch_judge&) = delete;
  branch_judge& operator=(const branch_judge&) = delete;
  /// `marks[v]` becomes 1 where the branch above internal node v stays, 0 where it is collapsed; 1
  /// for the root, terminals and unused numbers. `nnodes` entries. While constraints are on, what
  /// they force stays.
  void mark(const_tree_span tree, std::span<std::uint8_t> marks);
  /// Collapses the tree.
  void condense(tree_span tree);

 private:
  void mark_by_rule_in_force(const_tree_span tree, std::span<std::uint8_t> marks);
  struct state;
  std::unique_ptr<state> state_;
};

/// Marks one tree under the rule in force.
void collapse_tree(const_tree_span tree, std::span<std::uint8_t> marks,
                   std::span<const std::uint8_t> ignored_taxa = {});

/// Removes the internal nodes marked 0, joining their descendants to their ancestors; normalises.
void condense_tree(tree_span tree, std::span<const std::uint8_t> marks);

}  // namespace zeb
