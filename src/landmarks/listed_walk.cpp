#include "landmarks/listed_walk.h"

namespace zeb {

listed_walk::listed_walk(const tree_links& links, tree_base base) {
  std::vector<std::int32_t> waiting;
  if (base.second >= 0) waiting = {base.second, base.first};
  while (!waiting.empty()) {
    const int v = waiting.back();
    waiting.pop_back();
    if (v < links.terminals) continue;
    inner.push_back(v);
    waiting.push_back(links.second[v]);
    waiting.push_back(links.first[v]);
  }
  walk = {links, base, inner};
}

}  // namespace zeb
