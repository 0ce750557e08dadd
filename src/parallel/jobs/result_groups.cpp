#include "parallel/jobs/result_groups.h"

#include "base/indices.h"
#include "trees/tree_groups.h"

namespace zeb {
namespace {

/// -1: there is no such group, and no free one.
int group_for(const std::string& name) {
  int free = -1;
  for (int g = tree_groups.limit - 1; g >= 0; --g) {
    if (!tree_group_defined(g)) {
      free = g;
    } else if (tree_groups.names[at(g)] == name) {
      return g;
    }
  }
  return free;
}

}  // namespace

void group_trees(int first, int end, const std::string& name) {
  const int group = first < end ? group_for(name) : -1;
  if (group < 0) return;
  define_tree_group(group, name);
  clear_tree_group(group);
  for (int t = first; t < end; ++t) add_to_tree_group(t, group);
}

}  // namespace zeb
