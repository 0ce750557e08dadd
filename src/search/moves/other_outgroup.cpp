#include "search/moves/other_outgroup.h"

#include <utility>

#include "base/indices.h"
#include "engine/passes/passes.h"

namespace zeb {

other_outgroup::other_outgroup(search_data& data, random_generator& random) : data_(data) {
  if (data_.has_asymmetric) return;
  stand_in_ = random.draw() % data_.n;
  if (stand_in_ != 0) exchange_terminals(data_, 0, stand_in_);
}

other_outgroup::~other_outgroup() {
  if (stand_in_ != 0) exchange_terminals(data_, 0, stand_in_);
}

void other_outgroup::exchange_labels(std::span<std::int32_t> tree) const {
  if (stand_in_ == 0) return;
  std::swap(tree[0], tree[at(stand_in_)]);
  // From terminal 0 to the root, ancestors become descendants; the root stays the root.
  const int root = data_.n;
  int below = 0;
  int v = tree[0];
  const int top = v;
  while (v != root) {
    const int above = tree[at(v)];
    tree[at(v)] = below;
    below = v;
    v = above;
  }
  // `below` hung on the root beside the stand-in, which now hangs where the root was.
  tree[at(stand_in_)] = below;
  if (top != root) {
    tree[0] = root;
    tree[at(top)] = root;
  }
}

}  // namespace zeb
