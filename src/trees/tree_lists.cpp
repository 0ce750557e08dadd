#include "trees/tree_lists.h"

#include "language/lexer.h"
#include "language/lists.h"
#include "trees/tree_store.h"

namespace zeb {

std::vector<std::uint8_t> read_tree_list() {
  require_trees();
  std::vector<std::uint8_t> chosen(static_cast<std::size_t>(store.ntrees), 0);
  if (!read_list(list_in_tree_buffer, 0, store.ntrees, "tree", chosen)) {
    chosen.assign(chosen.size(), 1);
  }
  return chosen;
}

std::vector<std::uint8_t> read_tree_list_or_last() {
  require_trees();
  if (!accept_char('/')) return read_tree_list();
  std::vector<std::uint8_t> chosen(static_cast<std::size_t>(store.ntrees), 0);
  chosen.back() = 1;
  return chosen;
}

}  // namespace zeb
