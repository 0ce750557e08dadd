#include "trees/registration.h"

#include "matrix/hooks.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

// The tree that `xread +` simulates data along.
std::vector<std::int32_t> copy_of_tree(int number) {
  require_trees();
  check_tree_number(number);
  const const_tree_span tree = stored_tree(number);
  return {tree.begin(), tree.end()};
}

}  // namespace

void register_trees() {
  hooks_of_matrix.stored_tree = copy_of_tree;
  register_tree_store();
  register_tree_lists();
  register_display();
  register_tree_file();
  register_auto_save();
}

}  // namespace zeb
