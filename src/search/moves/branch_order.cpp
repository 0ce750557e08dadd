#include "search/moves/branch_order.h"

#include <algorithm>

#include "base/indices.h"

namespace zeb {

void branch_order::begin(int top, int first, int second) { levels_ = {{top}, {first, second}}; }

// Where the descendants of a run are, or would be, in the level after it.
branch_order::run branch_order::descendants(const search_data& data, const level& items, run of) {
  const auto internal = [n = data.n, all = std::span(items)](std::size_t first,
                                                             std::size_t length) {
    const auto part = all.subspan(first, length);
    return static_cast<std::size_t>(
        std::count_if(part.begin(), part.end(), [n](std::int32_t v) { return v >= n; }));
  };
  return {2 * internal(0, of.first), 2 * internal(of.first, of.length)};
}

void branch_order::insert(const search_data& data, int target, int joint, int node) {
  std::size_t depth = 0;
  const int top = levels_[0][0];
  for (int v = target; v != top; v = data.tree.anc[at(v)]) ++depth;
  level& items = levels_[depth];
  const auto place = std::find(items.begin(), items.end(), target);
  run below = descendants(data, items, {static_cast<std::size_t>(place - items.begin()), 1});
  *place = joint;
  coming_ = {target, node};
  while (!coming_.empty()) {
    if (++depth == levels_.size()) levels_.emplace_back();
    level& here = levels_[depth];
    const run old = below;
    below = descendants(data, here, old);
    const auto first = here.begin() + static_cast<std::ptrdiff_t>(old.first);
    const auto end = first + static_cast<std::ptrdiff_t>(old.length);
    leaving_.assign(first, end);
    here.insert(here.erase(first, end), coming_.begin(), coming_.end());
    std::swap(coming_, leaving_);
  }
}

int branch_order::list(std::span<std::int32_t> out) const {
  auto end = out.begin();
  for (std::size_t depth = 1; depth < levels_.size(); ++depth)
    end = std::copy(levels_[depth].begin(), levels_[depth].end(), end);
  return static_cast<int>(end - out.begin());
}

}  // namespace zeb
