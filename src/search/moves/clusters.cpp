#include "search/moves/clusters.h"

#include <algorithm>

#include "base/arena.h"
#include "base/errors.h"

namespace zeb {
namespace {

std::int32_t& at(std::span<std::int32_t> s, int i) { return s[static_cast<std::size_t>(i)]; }

int preorder_of(const search_data& data, std::span<std::int32_t> order,
                std::span<std::int32_t> stack) {
  int depth = 0;
  int count = 0;
  at(stack, depth++) = at(data.tree.sister, 0);
  while (depth > 0) {
    const int v = at(stack, --depth);
    at(order, count++) = v;
    if (v < data.n) continue;
    at(stack, depth++) = at(data.tree.second, v);
    at(stack, depth++) = at(data.tree.first, v);
  }
  return count;
}

void or_words(word* into, const word* from, std::size_t words) {
  for (std::size_t w = 0; w < words; ++w) into[w] |= from[w];
}

}  // namespace

cluster_cut allocate_clusters(search_data& data, int cluster_size) {
  const auto nodes = static_cast<std::size_t>(data.nodes);
  cluster_cut cut;
  cut.close_at = std::max(2, (2 * cluster_size + 2) / 3);
  const std::size_t most = nodes / static_cast<std::size_t>(cut.close_at) + 2;
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
    const int v = at(order, i);
    at(below, v) =
        v < data.n ? 1 : at(below, at(data.tree.first, v)) + at(below, at(data.tree.second, v));
  }
  at(below, 0) = 1;
  at(below, data.n) = data.n;
}

namespace {

/// From the leaves rootward, nodes gather until a piece holds `close_at` of them: then its topmost
/// node closes it. With two descendants that are open by less than `close_at` nodes each, no piece
/// gets twice that many. Leaves 0 in `open` at the topmost nodes.
void close_pieces(const search_data& data, const cluster_cut& cut, std::span<std::int32_t> order,
                  int count) {
  const std::span<std::int32_t> open = cut.open_nodes;
  for (int i = count - 1; i >= 0; --i) {
    const int v = at(order, i);
    int gathered = 1;
    if (v >= data.n)
      gathered += at(open, at(data.tree.first, v)) + at(open, at(data.tree.second, v));
    at(open, v) = gathered >= cut.close_at ? 0 : gathered;
  }
  at(open, at(order, 0)) = 0;
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
    const int v = at(order, i);
    const int c =
        at(cut.open_nodes, v) == 0 ? cut.count++ : at(data.cluster_of, at(data.tree.anc, v));
    at(data.cluster_of, v) = c;
    ++at(cut.start, c + 1);
  }
  ALWAYS_CHECK(cut.count < static_cast<int>(cut.start.size()), "too many node clusters");
  for (int c = 0; c < cut.count; ++c) at(cut.start, c + 1) += at(cut.start, c);
  const std::span<std::int32_t> fill = cut.main_store;  // overwritten by the next clip
  std::copy(cut.start.begin(), cut.start.begin() + cut.count, fill.begin());
  for (int i = 0; i < count; ++i) {
    const int v = at(order, i);
    at(cut.nodes_in, at(fill, at(data.cluster_of, v))++) = v;
  }
  data.cluster_count = cut.count;
  unite_clusters(data, cut);
}

void unite_clusters(search_data& data, const cluster_cut& cut) {
  for (int c = 0; c < cut.count; ++c) {
    cluster_record& record = data.clusters[static_cast<std::size_t>(c)];
    const int first = at(cut.start, c);
    const int end = at(cut.start, c + 1);
    std::fill_n(record.union_now, data.set_stride, 0U);
    for (int i = first; i < end; ++i) {
      or_words(record.union_now,
               data.branch_base + static_cast<std::size_t>(at(cut.nodes_in, i)) * data.set_stride,
               data.set_stride);
    }
    record.main_nodes = cut.nodes_in.data() + first;
    record.n_main = end - first;
    record.clip_nodes = cut.clip_store.data() + first;
    record.n_clip = 0;
  }
}

}  // namespace zeb
