// Groups of trees, and what higher floors supply to select trees by their score.
#pragma once

#include <span>

namespace zeb {

void tgroup_command();
void absincl_command();

/// Fills the score of every tree of the buffer (`ntrees` values, score units).
using tree_scorer = void (*)(std::span<double> scores);
/// Plugs in the scores for the selector "len", at start-up. Without them it says so.
void set_tree_scorer(tree_scorer scorer);
/// What was plugged in; null without.
tree_scorer tree_scores();

/// Does the tree satisfy the constraints? Raises the error where there are none.
using constraint_check = bool (*)(int tree);
/// Plugs in the check for the selector "mono", at start-up. Without it the selector says so.
void set_constraint_check(constraint_check check);

}  // namespace zeb
