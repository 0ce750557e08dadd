#include "walking/working_tree.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {

working_tree::working_tree(std::string no_space)
    : no_space_(std::move(no_space)), nodes_(store.nnodes) {}

working_tree::~working_tree() { remove(); }

void working_tree::put(const_tree_span tree) {
  if (store.nnodes != nodes_) error_end("The data that these trees belong to are gone");
  if (!is_there() || number_ != store.ntrees - 1) {
    remove();
    if (store.ntrees >= store.maxtrees) error_end(no_space_, store.ntrees);
    take_slot();
    number_ = store.ntrees - 1;
  }
  tree_.assign(tree.begin(), tree.end());
  std::ranges::copy(tree, stored_tree(number_).begin());
}

// A script may have removed it, and put others in its place.
bool working_tree::is_there() const {
  if (number_ < 0 || store.nnodes != nodes_ || number_ >= store.ntrees) return false;
  if (number_ == store.ntrees - 1) return true;
  const auto nodes = at(node_limit(tree_, matrix.ntax));
  return std::equal(tree_.begin(), tree_.begin() + static_cast<std::ptrdiff_t>(nodes),
                    stored_tree(number_).begin());
}

void working_tree::remove() noexcept {
  if (is_there()) {
    try {
      std::vector<std::uint8_t> keep(at(store.ntrees), 1);
      keep[at(number_)] = 0;
      select_trees(store, keep);
    } catch (const std::exception&) {
      // Without memory the tree stays.
    }
  }
  number_ = -1;
}

}  // namespace zeb
