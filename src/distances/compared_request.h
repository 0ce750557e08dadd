// What commands that compare trees in pairs are asked: which trees, and where the table goes.
#pragma once

#include <utility>

#include "distances/matrix_report.h"
#include "distances/tree_distances.h"
#include "distances/tree_words.h"

namespace zeb {

/// The lists become the rows and columns of the table. Errors: fewer than two trees; a file that
/// can't hold such a table.
void take_compared_trees(tree_words words, const matrix_target& target,
                         compared_trees_request& trees);

/// Options of the table and lists of trees up to ";", for requests with members `trees`, `target`.
template <class request>
void read_compared_trees(request& r, const option_table& table) {
  tree_words words = read_tree_words(r, table, 2);
  take_compared_trees(std::move(words), r.target, r.trees);
}

}  // namespace zeb
