// What the differences in each character do to the supports of the first file's groups.
#pragma once

#include <string>
#include <vector>

#include "compare/trees/compared_results.h"
#include "trees/tree_record.h"

namespace zeb {

/// Combined Bremer supports, per cent, as one round of TBR estimates them: by node.
struct bremer_differences {
  struct of_character {
    int character = 0;
    std::vector<double> changes;  // by node: support with the second file's scores, less `usual`
  };
  int tree = -1;                         // the first file's tree that they are for; -1 none
  std::vector<tree_node> groups;         // that tree, without what has no support
  std::vector<double> usual;             // no_fraction where there is no group
  std::vector<of_character> characters;  // those that change a support by `least` or more
};

/// Taxa that the tree lacks are set aside meanwhile. An interrupt ends it: the characters looked at
/// so far are there.
bremer_differences find_bremer_differences(const compared_results& results, int least);

void print_bremer_table(const bremer_differences& found);
void list_bremer_differences(const bremer_differences& found);
/// On each branch its support and the characters that change it.
void draw_bremer_differences(const bremer_differences& found, const std::string& file_name,
                             const std::string& other_file);

}  // namespace zeb
