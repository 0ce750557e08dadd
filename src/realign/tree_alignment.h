// Aligning configurations by what they cost on a tree.
#pragma once

#include <vector>

#include "realign/alignment.h"
#include "trees/tree_record.h"

namespace zeb {

struct tree_alignment {
  int tree = 0;
  int cycles = 0;      // of perturbing and improving
  int level = 0;       // 0 to 4
  int reference = -1;  // the taxon that doesn't move; -1, or without the configuration: the first
                       // terminal that has it
};
struct tree_alignment_outcome {
  int aligned = 0;    // terminals
  double before = 0;  // score of the aligned terminals: lengths times weights of points
  double after = 0;   // never larger
};

/// The errors of trees that no configuration can be aligned on.
void check_tree_alignment(const tree_alignment& how, const std::vector<int>& characters);
/// Has the configuration a terminal of the tree with some of its points missing?
bool has_incomplete_terminals(const tree_alignment& how, int character);
/// Moves the terminals that have all points; all or, when interrupted, none of them. Draws come
/// from the process's generator.
tree_alignment_outcome align_on_tree(const tree_alignment& how, int character);

}  // namespace zeb
