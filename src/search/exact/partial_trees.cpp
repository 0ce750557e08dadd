#include "search/exact/partial_trees.h"

#include <algorithm>

#include "base/arena.h"
#include "base/indices.h"

namespace zeb {

partial_tree::partial_tree(int size, std::size_t words, std::size_t conflict_words)
    : room(at(2 * size - 3)), unspoilt(conflict_words, 0) {
  constexpr std::size_t cache_line = 64;
  for (std::span<word>* set : {&present, &charged, &added})
    *set = calloc_low<word>(words, cache_line);
}

void list_all_places(const search_data& data, const growing_tree& tree, partial_tree& now) {
  now.places.resize(now.rest.size() * now.room);
  now.place_count.assign(now.rest.size(), static_cast<int>(now.room));
  std::size_t count = 0;
  for (int v = 1; v < tree.next_joint(); ++v)
    if (v != data.n && data.tree.anc[at(v)] != 0) now.places[count++] = v;
  for (std::size_t i = 1; i < now.rest.size(); ++i)
    std::copy_n(now.places.begin(), count, now.places_of(i));
}

void hand_places_down(partial_tree& now, std::size_t which, std::int32_t branch,
                      const growing_tree& tree, partial_tree& next) {
  next.places.resize(next.rest.size() * next.room);
  next.place_count.resize(next.rest.size());
  for (std::size_t from = 0, to = 0; from < now.rest.size(); ++from) {
    if (from == which) continue;
    const std::int32_t* const old = now.places_of(from);
    const int count = now.place_count[from];
    std::int32_t* const own = next.places_of(to);
    std::copy_n(old, count, own);
    int total = count;
    if (std::find(old, old + count, branch) != old + count) {
      own[total++] = tree.next_joint();
      own[total++] = now.rest[which];
    }
    next.place_count[to++] = total;
  }
}

}  // namespace zeb
