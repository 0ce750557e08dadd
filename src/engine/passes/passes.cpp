#include "engine/passes/passes.h"

#include <algorithm>
#include <cstring>

#include "base/indices.h"
#include "engine/fit/implied_weighting.h"
#include "engine/passes/links.h"
#include "engine/wide/wide_sets.h"

namespace zeb {

pass_context context_of(search_data& data) {
  pass_context t;
  t.anc = data.tree.anc.data();
  t.sister = data.tree.sister.data();
  t.first = data.tree.first.data();
  t.second = data.tree.second.data();
  t.down = data.down_base;
  t.final = data.final_base;
  t.unions = data.unions_base;
  t.branch = data.branch_base;
  t.stride = data.set_stride;
  t.n = data.n;
  t.list = data.node_list.data();
  t.stack = data.node_stack.data();
  t.undo = data.undo.recording ? &data.undo : nullptr;
  if (data.in_swap && data.cluster_count > 0) {
    t.cluster_of = data.cluster_of.data();
    t.clusters = data.clusters.data();
  }
  return t;
}

namespace {

/// Internal nodes of the subtree of `top`, each before its descendants. A node's neighbours in the
/// list are its relatives, whose sets are still in the nearest cache when a pass gets there.
int list_internals(search_data& data, int top) {
  std::int32_t* const list = data.node_list.data();
  std::int32_t* const stack = data.node_stack.data();
  int count = 0;
  int depth = 0;
  if (top >= data.n) stack[depth++] = top;
  while (depth > 0) {
    const int v = stack[--depth];
    list[count++] = v;
    const int a = data.tree.first[at(v)];
    const int b = data.tree.second[at(v)];
    if (b >= data.n) stack[depth++] = b;
    if (a >= data.n) stack[depth++] = a;
  }
  return count;
}

void widen_clusters(search_data& data) {
  for (int v = 0; v < data.nodes; ++v) {
    if (v == data.n) continue;
    word* const wide = data.clusters[at(data.cluster_of[at(v)])].union_now;
    const word* const branch = data.sets[at(v)].branch;
    for (int w = 0; w < data.nwords; ++w) wide[w] |= branch[w];
    if (data.has_wide) widen_wide_cluster(data, data.cluster_of[at(v)], v);
  }
}

/// Returns what the steps cost; under implied weights they are counted in place of that.
double pass_from(search_data& data, int top) {
  const int count = list_internals(data, top);
  if (count == 0) return 0;
  double cost = 0;
  if (data.nwords > 0) {
    const pass_context t = context_of(data);
    cost =
        static_cast<double>(data.kernels.down_pass(t, data.node_list.data(), count, data.layout));
    data.kernels.final_pass(t, data.node_list.data(), count, data.layout);
  }
  if (data.has_wide) {
    cost += wide_down_pass(data, count);
    wide_final_pass(data, count);
  }
  return cost;
}

}  // namespace

double full_pass(search_data& data) {
  if (data.implied_on) reset_counters(data);
  const double cost = pass_from(data, data.n);
  if (data.in_swap && data.cluster_count > 0) widen_clusters(data);
  if (!data.implied_on) return static_cast<double>(data.base_steps) + data.wide.base_cost + cost;
  refresh_step_costs(data);
  return total_fit(data);
}

double tree_length(search_data& data, std::span<const std::int32_t> anc) {
  if (anc.data() != data.tree.anc.data())
    std::memcpy(data.tree.anc.data(), anc.data(), at(data.nodes) * sizeof(anc[0]));
  rebuild_links(data);
  const double of_sets = full_pass(data);
  return data.whole ? of_sets + data.whole->score(data) : of_sets;
}

double subtree_pass(search_data& data, int node) {
  const double cost = pass_from(data, node);
  if (data.implied_on) refresh_step_costs(data);
  return cost;
}

void exchange_terminals(search_data& data, int a, int b) {
  std::swap_ranges(data.sets[at(a)].down, data.sets[at(a)].down + data.nwords,
                   data.sets[at(b)].down);
  if (data.has_wide) exchange_wide_terminals(data, a, b);
}

}  // namespace zeb
