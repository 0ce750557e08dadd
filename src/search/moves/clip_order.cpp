#include "search/moves/clip_order.h"

#include <algorithm>
#include <vector>

#include "base/indices.h"
#include "engine/wide/wide_costs.h"

namespace zeb {
namespace {

/// Fields where the node's set shares nothing with its ancestor's final set: a rough count of what
/// clipping it would gain.
double changes_above(const search_data& data, int v) {
  const node_sets& ancestor = data.sets[at(data.tree.anc[at(v)])];
  const word* own = v < data.n ? data.sets[at(v)].down : data.sets[at(v)].final;
  const std::int32_t changes =
      data.kernels.cost_pair(own, ancestor.final, data.layout, INT32_MAX / 2);
  return data.has_wide ? changes + wide_change_above(data, v) : changes;
}

void set_aside(const search_data& data, int v, std::span<std::uint8_t> aside) {
  std::vector<int> stack = {v};
  while (!stack.empty()) {
    const int x = stack.back();
    stack.pop_back();
    aside[at(x)] = 1;
    if (x < data.n) continue;
    stack.push_back(data.tree.first[at(x)]);
    stack.push_back(data.tree.second[at(x)]);
  }
}

}  // namespace

/// Nodes are picked from the highest count down. One pass of picking touches separate parts of the
/// tree: a picked node's subtree and ancestor wait for a later pass.
void promising_clips_first(const search_data& data, std::span<std::int32_t> order) {
  std::vector<double> gain(at(data.nodes), 0);
  std::vector<std::int32_t> waiting;
  std::vector<std::int32_t> last;
  for (int v = 1; v < data.nodes; ++v) {
    if (v != data.n) gain[at(v)] = changes_above(data, v);
    const bool late = v == data.n || v == data.tree.sister[0] || gain[at(v)] == 0;
    (late ? last : waiting).push_back(v);
  }
  std::stable_sort(waiting.begin(), waiting.end(),
                   [&gain](int a, int b) { return gain[at(a)] > gain[at(b)]; });
  std::size_t count = 1;
  order[0] = 0;
  while (!waiting.empty()) {
    std::vector<std::uint8_t> aside(at(data.nodes), 0);
    std::vector<std::int32_t> later;
    for (const std::int32_t v : waiting) {
      if (aside[at(v)]) {
        later.push_back(v);
        continue;
      }
      order[count++] = v;
      set_aside(data, v, aside);
      aside[at(data.tree.anc[at(v)])] = 1;
    }
    waiting.swap(later);
  }
  for (const std::int32_t v : last) order[count++] = v;
}

void given_clips_first(std::span<const std::int32_t> given, std::span<std::int32_t> order) {
  std::vector<std::uint8_t> listed(order.size(), 0);
  std::size_t count = 0;
  const auto list = [&](std::int32_t v) {
    if (!listed[at(v)]) order[count++] = v;
    listed[at(v)] = 1;
  };
  list(0);
  for (const std::int32_t v : given) list(v);
  for (std::int32_t v = 1; v < static_cast<std::int32_t>(order.size()); ++v) list(v);
}

}  // namespace zeb
