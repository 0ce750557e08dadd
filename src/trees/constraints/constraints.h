// Constraints of monophyly, as the user defines them.
//
// A group parts its members from all taxa that are neither members nor floating: it is in a tree if
// some branch has all members on one side and none of the others there. Floating taxa may be on
// either side. Trees count as unrooted, so a group that holds the outgroup is the same constraint
// as the group of the others. Taxa that are inactive, or that a tree lacks, are ignored.
#pragma once

#include <span>
#include <vector>

#include "base/taxon_set.h"
#include "trees/tree_record.h"

namespace zeb {

struct constraint_group {
  taxon_set members;   // fixed ones
  taxon_set floating;  // no member of the other set
};

/// All groups over the taxa of the matrix. They go with it.
struct constraint_definitions {
  bool active = false;          // the switch of `constrain`: searches obey
  std::vector<tree_node> tree;  // all of its groups together are one constraint; empty: none
  std::vector<constraint_group> positive;
  std::vector<constraint_group> negative;

  bool defined() const { return !tree.empty() || !positive.empty() || !negative.empty(); }
};
extern constraint_definitions constraints;  // written in trees/ only

void define_constraints(constraint_definitions definitions, bool active);
/// Switches the constraints on or off. Error: none are defined.
void activate_constraints(bool on);
void forget_constraints();
/// Error where none are defined.
void require_constraints();

/// The groups of a tree, from each internal node but the root; taxa that it lacks float.
std::vector<constraint_group> groups_of_tree(const_tree_span tree, int ntax);

/// Constraints over terminals 0 to `terminals`-1 as bits, a bit for each group: those of the
/// constraint tree first, then positive, then negative ones.
struct constraint_rows {
  int terminals = 0;
  std::size_t words = 0;          // of a row; 0 without constraints
  std::vector<set_word> members;  // row of each terminal: groups of which it is a member
  std::vector<set_word> others;   // groups out of which it must stay
  // Kinds of groups. Those with fewer than two members or two others are in neither: every tree has
  // them, and they are fulfilled or don't count.
  std::vector<set_word> positive;
  std::vector<set_word> negative;
  std::vector<set_word> of_tree;  // groups of the constraint tree, among the positive ones
  bool any_floating = false;

  const set_word* members_of(int terminal) const { return members.data() + at(terminal) * words; }
  const set_word* others_of(int terminal) const { return others.data() + at(terminal) * words; }
};
/// Rows for terminals that stand for these taxa of the matrix.
constraint_rows rows_of_constraints(std::span<const std::int32_t> taxa);
/// Do the constraint tree or a positive group, whether they are active or not, demand this very
/// group on these taxa?
bool demand_group(const constraint_group& group, std::span<const std::int32_t> taxa);
/// Error where groups contradict each other on these taxa. What floating taxa make impossible isn't
/// seen here.
void check_consistency(std::span<const std::int32_t> taxa);

}  // namespace zeb
