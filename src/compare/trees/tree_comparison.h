// What the differences between two data sets do to their results: the trees of both, looked at on
// the combined matrix.
#pragma once

#include <string>
#include <vector>

#include "compare/trees/compared_results.h"

namespace zeb {

struct tree_comparison_settings {
  critical_method critical = critical_method::either;
  missing_taxa addition = missing_taxa::stay_away;
  bool figures = true;
  bool list_characters = true;  // with other lengths on the trees of the other file
  bool bremer = false;          // differences in support, character by character
  bool bremer_table = false;    // as a table
  int least_bremer = 5;         // per cent: smaller differences aren't reported
};

struct tree_comparison_result {
  int critical_cells = 0;
  std::vector<std::string> figures;  // lines that tell the files written
};

/// Tells what it finds. Both files have trees, which are rooted on the first taxon. With taxa
/// added the trees in the buffer get them. The matrix and its settings are then what they were.
tree_comparison_result compare_trees_of_files(const compared_results& results,
                                              const tree_comparison_settings& how);

}  // namespace zeb
