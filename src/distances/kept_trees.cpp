#include "distances/kept_trees.h"

#include <algorithm>
#include <string>

#include "console/output.h"
#include "console/settings.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

void store_tree(const_tree_span tree) {
  const tree_span slot = take_slot(true, "No space to store new trees");
  std::ranges::copy(tree, slot.begin());
}

}  // namespace

void keep_tree(const_tree_span tree, std::string_view group, std::string_view what) {
  store_tree(tree);
  group_automatically(store.ntrees - 1, store.ntrees, group);
  if (settings.report) report_line(what, "stored as tree", store.ntrees - 1);
}

void keep_trees(const std::vector<std::vector<tree_node>>& trees, std::string_view group,
                std::string_view what) {
  if (trees.empty()) return;
  const int first = store.ntrees;
  for (const std::vector<tree_node>& tree : trees) store_tree(tree);
  group_automatically(first, store.ntrees, group);
  if (settings.report) report_line(what, "stored as trees", first, "to", store.ntrees - 1);
}

}  // namespace zeb
