#include "distances/compared_request.h"

#include <utility>

#include "base/errors.h"

namespace zeb {

void take_compared_trees(tree_words words, const matrix_target& target,
                         compared_trees_request& trees) {
  trees.rows = std::move(words.lists[0]);
  if (words.lists.size() == 2) trees.columns = std::move(words.lists[1]);
  trees.excluded = std::move(words.excluded);
  if (trees.count() < 2) error_end("Give two trees or more to compare");
  if (!target.phylip.empty() && !trees.is_square())
    error_end("PHYLIP matrices have the same trees as rows and as columns");
}

}  // namespace zeb
