// Trees in memory and trees of the vault as kinds of lists, and "@T N" in lists of taxa.
#include "language/lists.h"

#include "language/hooks.h"
#include "matrix/matrix.h"
#include "trees/registration.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

std::string_view name_of_group(int group) {
  return store.group_names[static_cast<std::size_t>(group)];
}

void mark_descendants(int tree, int node, std::span<std::uint8_t> marks) {
  check_tree_number(tree);
  if (node >= 0 && node < matrix.ntax) {
    marks[static_cast<std::size_t>(node)] = 1;
    return;
  }
  check_node_number(tree, node);
  mark_terminals(stored_tree(tree), matrix.ntax, node, marks);
}

}  // namespace

void register_tree_lists() {
  list_kind trees{.noun = "tree",
                  .count = [] { return store.ntrees; },
                  .group_count = [] { return static_cast<int>(store.group_names.size()); },
                  .group_name = name_of_group,
                  .group_defined = tree_group_defined,
                  .in_group = in_tree_group};
  register_list_kind(trees);
  // Trees in the vault are members of no group.
  trees.noun = "vault-tree";
  trees.count = [] { return store.vault_trees; };
  trees.in_group = [](int, int) { return false; };
  register_list_kind(trees);
  hooks_of_language.mark_descendants = mark_descendants;
}

}  // namespace zeb
