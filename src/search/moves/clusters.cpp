#include "search/moves/clusters.h"

#include <algorithm>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "engine/wide/wide_sets.h"

namespace zeb {
namespace {

int preorder_of(const search_data& data, std::span<std::int32_t> order,
                std::span<std::int32_t> stack) {
  int depth = 0;
  int count = 0;
  stack[at(depth++)] = data.tree.sister[0];
  while (depth > 0) {
    const int v = stack[at(--depth)];
    order[at(count++)] = v;
    if (v < data.n) continue;
    stack[at(depth++)] = data.tree.second[at(v)];
    stack[at(depth++)] = data.tree.first[at(v)];
  }
  return count;
}

void or_words(word* into, const word* from, std::size_t words) {
  for (std::size_t w = 0; w < words; ++w) into[w] |= from[w];
}

}  // namespace

cluster_cut allocate_clusters(search_data& data, int cluster_size) {
  const auto nodes = at(data.nodes);
  cluster_cut cut;
  cut.close_at = std::max(2, (2 * cluster_size + 2) / 3);
  const std::size_t most = nodes / at(cut.close_at) + 2;
  cut.nodes_in = alloc_low<std::int32_t>(nodes);
  cut.start = alloc_low<std::int32_t>(most + 1);
  cut.main_store = alloc_low<std::int32_t>(nodes);
  cut.clip_store = alloc_low<std::int32_t>(nodes);
  cut.below = alloc_low<std::int32_t>(nodes);
  cut.open_nodes = alloc_low<std::int32_t>(nodes);
  data.cluster_of = calloc_low<std::int32_t>(nodes);
  data.clusters = calloc_low<cluster_record>(most);
  const std::size_t words = checked_product(most, data.set_stride);
  const std::span<word> now = calloc_low<word>(words, 64);
  data.union_base = now.data();
  for (std::size_t c = 0; c < most; ++c) {
    data.clusters[c].union_now = now.data() + c * data.set_stride;
  }
  if (data.has_wide) allocate_wide_clusters(data, static_cast<int>(most));
  return cut;
}

void release_clusters(search_data& data) {
  data.cluster_of = {};
  data.clusters = {};
  data.union_base = nullptr;
  data.cluster_count = 0;
}

void count_terminals_below(const search_data& data, std::span<std::int32_t> below) {
  const std::span<std::int32_t> order = data.node_list;
  const int count = preorder_of(data, order, data.node_stack);
  for (int i = count - 1; i >= 0; --i) {
    const int v = order[at(i)];
    below[at(v)] =
        v < data.n ? 1 : below[at(data.tree.first[at(v)])] + below[at(data.tree.second[at(v)])];
  }
  below[0] = 1;
  below[at(data.n)] = data.n;
}

namespace {

/// From the leaves rootward, nodes gather until a piece holds `close_at` of them: then its topmost
/// node closes it. With two descendants that are open by less than `close_at` nodes each, no piece
/// gets twice that many. Leaves 0 in `open` at the topmost nodes.
void close_pieces(const search_data& data, const cluster_cut& cut, std::span<std::int32_t> order,
                  int count) {
  const std::span<std::int32_t> open = cut.open_nodes;
  for (int i = count - 1; i >= 0; --i) {
    const int v = order[at(i)];
    int gathered = 1;
    if (v >= data.n)
      gathered += open[at(data.tree.first[at(v)])] + open[at(data.tree.second[at(v)])];
    open[at(v)] = gathered >= cut.close_at ? 0 : gathered;
  }
  open[at(order[0])] = 0;
}

}  // namespace

void cut_clusters(search_data& data, cluster_cut& cut) {
  count_terminals_below(data, cut.below);
  const std::span<std::int32_t> order = data.node_list;
  const int count = preorder_of(data, order, data.node_stack);
  close_pieces(data, cut, order, count);

  cut.count = 0;
  std::fill(cut.start.begin(), cut.start.end(), 0);
  for (int i = 0; i < count; ++i) {
    const int v = order[at(i)];
    const int c =
        cut.open_nodes[at(v)] == 0 ? cut.count++ : data.cluster_of[at(data.tree.anc[at(v)])];
    data.cluster_of[at(v)] = c;
    ++cut.start[at(c + 1)];
  }
  ALWAYS_CHECK(cut.count < static_cast<int>(cut.start.size()), "too many node clusters");
  for (int c = 0; c < cut.count; ++c) cut.start[at(c + 1)] += cut.start[at(c)];
  const std::span<std::int32_t> fill = cut.main_store;  // overwritten by the next clip
  std::copy(cut.start.begin(), cut.start.begin() + cut.count, fill.begin());
  for (int i = 0; i < count; ++i) {
    const int v = order[at(i)];
    cut.nodes_in[at(fill[at(data.cluster_of[at(v)])]++)] = v;
  }
  data.cluster_count = cut.count;
  unite_clusters(data, cut);
}

void unite_clusters(search_data& data, const cluster_cut& cut) {
  for (int c = 0; c < cut.count; ++c) {
    cluster_record& record = data.clusters[at(c)];
    const int first = cut.start[at(c)];
    const int end = cut.start[at(c + 1)];
    std::fill_n(record.union_now, data.set_stride, 0U);
    for (int i = first; i < end; ++i) {
      or_words(record.union_now,
               data.branch_base + static_cast<std::size_t>(cut.nodes_in[at(i)]) * data.set_stride,
               data.set_stride);
    }
    if (data.has_wide) {
      empty_wide_cluster(data, c);
      for (int i = first; i < end; ++i) widen_wide_cluster(data, c, cut.nodes_in[at(i)]);
    }
    record.main_nodes = cut.nodes_in.data() + first;
    record.n_main = end - first;
    record.clip_nodes = cut.clip_store.data() + first;
    record.n_clip = 0;
  }
}

}  // namespace zeb
