// Groups of taxa, characters and trees.
#include <bit>
#include <cstdint>

#include "functions/arguments.h"
#include "functions/subjects.h"
#include "language/interpreter.h"
#include "matrix/matrix.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

int count_members(std::span<const std::uint32_t> words, int group) {
  int count = 0;
  for (const std::uint32_t word : words) count += static_cast<int>(word >> group & 1U);
  return count;
}

int matrix_group() {
  require_data("using data in expressions");
  return group_argument(matrix_state::group_count);
}

double taxon_in_group() {
  open_brackets();
  const int group = matrix_group();
  const int taxon = taxon_argument();
  close_brackets();
  return matrix.taxon_groups[static_cast<std::size_t>(taxon)] >> group & 1U;
}

double character_in_group() {
  open_brackets();
  const int group = matrix_group();
  const int character = character_argument();
  close_brackets();
  return matrix.character_groups[static_cast<std::size_t>(character)] >> group & 1U;
}

double is_tree_in_group() {
  open_brackets();
  const int group = group_argument(tree_groups.limit);
  const int tree = tree_argument();
  close_brackets();
  return in_tree_group(tree, group);
}

double taxa_in_group() {
  open_brackets();
  const int group = matrix_group();
  close_brackets();
  return count_members(matrix.taxon_groups, group);
}

double characters_in_group() {
  open_brackets();
  const int group = matrix_group();
  close_brackets();
  return count_members(matrix.character_groups, group);
}

double trees_in_group() {
  open_brackets();
  const int group = group_argument(tree_groups.limit);
  close_brackets();
  int count = 0;
  for (int tree = 0; tree < store.ntrees; ++tree) count += in_tree_group(tree, group);
  return count;
}

// clang-format off
constexpr expression_function rows[] = {
    {"isinagroup", "[G T]", "1 if taxon T is in taxon group G", taxon_in_group},
    {"isinxgroup", "[G C]", "1 if character C is in character group G", character_in_group},
    {"isintgroup", "[G T]", "1 if tree T is in tree group G", is_tree_in_group, function_list::general, "isintree"},
    {"taxingp", "[G]", "number of taxa in taxon group G", taxa_in_group},
    {"charsingp", "[G]", "number of characters in character group G", characters_in_group},
    {"treesingp", "[G]", "number of trees in tree group G", trees_in_group},
};
// clang-format on

}  // namespace

const std::span<const expression_function> group_functions = rows;

}  // namespace zeb
