#include "trees/tree_lists.h"

#include "base/errors.h"
#include "base/indices.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {

namespace {

std::string_view name_of_group(int group) { return tree_groups.names[at(group)]; }

}  // namespace

void flag_descendants(int tree, int node, std::span<std::uint8_t> flags) {
  check_tree_number(tree);
  if (node >= 0 && node < matrix.ntax) {
    flags[at(node)] = 1;
    return;
  }
  check_node_number(tree, node);
  flag_terminals(stored_tree(tree), matrix.ntax, node, flags);
}

std::vector<std::uint8_t> read_tree_list() {
  require_trees();
  std::vector<std::uint8_t> chosen(at(store.ntrees), 0);
  if (!read_list(list_in_tree_buffer, 0, store.ntrees, "tree", chosen)) {
    chosen.assign(chosen.size(), 1);
  }
  return chosen;
}

std::vector<std::uint8_t> read_tree_list_or_last() {
  require_trees();
  if (!accept_char('/')) return read_tree_list();
  std::vector<std::uint8_t> chosen(at(store.ntrees), 0);
  chosen.back() = 1;
  return chosen;
}

void target_group::start() const {
  if (number >= 0 && replace) clear_tree_group(number);
}

void target_group::add(int tree) const {
  if (number >= 0) add_to_tree_group(tree, number);
}

target_group read_target_group() {
  target_group group;
  if (accept_char('=')) {
    group.replace = true;
  } else if (!accept_char('>')) {
    return group;
  }
  group.number = read_int();
  if (group.number < 0 || group.number >= tree_groups.limit) {
    error_end_f("Can store trees only as groups 0-%i", tree_groups.limit - 1);
  }
  return group;
}

void register_tree_lists() {
  list_kind trees{.noun = "tree",
                  .count = [] { return store.ntrees; },
                  .group_count = [] { return static_cast<int>(tree_groups.names.size()); },
                  .group_name = name_of_group,
                  .group_defined = tree_group_defined,
                  .in_group = in_tree_group};
  register_list_kind(trees);
  // Trees in the vault are members of no group.
  trees.noun = "vault-tree";
  trees.count = [] { return store.vault.ntrees; };
  trees.in_group = [](int, int) { return false; };
  register_list_kind(trees);
}

}  // namespace zeb
