#include "landmarks/landmark_lists.h"

#include "base/errors.h"
#include "base/indices.h"
#include "language/lexer.h"
#include "language/list_kinds.h"
#include "language/lists.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

std::vector<int> all_configurations() {
  std::vector<int> all(landmark_configurations().size());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<int>(i);
  return all;
}

std::vector<int> read_trees() {
  require_trees();
  std::vector<std::uint8_t> marks(at(store.ntrees), 0);
  constexpr unsigned flags = list_slash_ends | list_in_tree_buffer | list_one_tree;
  if (!read_list(flags, 0, store.ntrees, "tree", marks)) marks.assign(marks.size(), 1);
  std::vector<int> found;
  for (int t = 0; t < store.ntrees; ++t) {
    if (marks[at(t)]) found.push_back(t);
  }
  return found;
}

}  // namespace

std::vector<int> read_configurations() {
  std::vector<std::uint8_t> marks(at(matrix.nchar), 0);
  if (!read_list(list_slash_ends, 0, matrix.nchar, "character", marks)) return all_configurations();
  std::vector<int> found;
  const auto all = landmark_configurations();
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!marks[at(c)]) continue;
    const landmark_configuration* const one = configuration_of(c);
    if (!one) error_end_f("Char. %i is not a landmark configuration!", c);
    found.push_back(static_cast<int>(one - all.data()));
  }
  return found;
}

landmark_lists read_landmark_lists(bool with_trees, bool with_landmarks) {
  landmark_lists lists;
  lists.configurations = all_configurations();
  if (with_trees) {
    lists.trees = read_trees();
    if (accept_char('/')) lists.configurations = read_configurations();
  } else {
    lists.configurations = read_configurations();
  }
  const int most = find_list_kind("landmark").count();
  lists.landmarks.assign(at(most), 1);
  if (!with_landmarks || !accept_char('/')) return lists;
  std::vector<std::uint8_t> marks(at(most), 0);
  if (read_list(list_plain, 0, most, "landmark", marks)) lists.landmarks = marks;
  return lists;
}

}  // namespace zeb
