// Most clusters lie wholly in the main tree, where their base list serves. So only the subtree is
// walked, and the lists of the clusters it touches are split; walking the whole main tree for each
// clip took longer than costing its candidates on large trees.
#include "search/moves/cluster_lists.h"

#include "base/indices.h"

namespace zeb {
namespace {

void touch(swap_run& run, int c) {
  cluster_record& record = run.data.clusters[at(c)];
  if (record.main_nodes == run.cut.main_store.data() + run.cut.start[at(c)]) return;
  record.main_nodes = run.cut.main_store.data() + run.cut.start[at(c)];
  record.n_main = 0;
  run.touched[at(run.n_touched++)] = c;
}

/// Fills clip_nodes and clip_clusters with the subtree's branches in preorder. The two branches at
/// the subtree's root are one: the second stands for both.
void walk_subtree(swap_run& run) {
  const search_data& data = run.data;
  const std::span<std::int32_t> stack = data.node_stack;
  int depth = 0;
  auto put = [&](int v) {
    const int c = data.cluster_of[at(v)];
    cluster_record& record = data.clusters[at(c)];
    touch(run, c);
    if (record.n_clip == 0) run.clip_clusters[at(run.n_clip_clusters++)] = c;
    record.clip_nodes[record.n_clip++] = v;
  };
  if (run.clip < data.n) {
    put(run.clip);
    return;
  }
  const int second = data.tree.second[at(run.clip)];
  const int first = data.tree.first[at(run.clip)];
  stack[at(depth++)] = second;
  stack[at(depth++)] = first;
  while (depth > 0) {
    const int v = stack[at(--depth)];
    if (v != first) put(v);
    if (v < data.n) continue;
    stack[at(depth++)] = data.tree.second[at(v)];
    stack[at(depth++)] = data.tree.first[at(v)];
  }
  touch(run, data.cluster_of[at(first)]);
}

/// Nodes of the touched clusters that stay in the main tree. `scratch` marks the others.
void split_touched(swap_run& run, int joint) {
  const search_data& data = run.data;
  const std::span<std::int32_t> gone = run.scratch;
  auto mark = [&](std::int32_t value) {
    gone[at(joint)] = gone[at(run.clip)] = value;
    if (run.clip >= data.n) gone[at(data.tree.first[at(run.clip)])] = value;
    for (int i = 0; i < run.n_clip_clusters; ++i) {
      const cluster_record& record = data.clusters[at(run.clip_clusters[at(i)])];
      for (int k = 0; k < record.n_clip; ++k) gone[at(record.clip_nodes[k])] = value;
    }
  };
  mark(1);
  for (int i = 0; i < run.n_touched; ++i) {
    const int c = run.touched[at(i)];
    cluster_record& record = data.clusters[at(c)];
    for (int k = run.cut.start[at(c)]; k < run.cut.start[at(c + 1)]; ++k) {
      const int v = run.cut.nodes_in[at(k)];
      if (!gone[at(v)]) record.main_nodes[record.n_main++] = v;
    }
  }
  mark(0);
}

}  // namespace

void make_cluster_lists(swap_run& run) {
  const search_data& data = run.data;
  run.n_clip_clusters = run.n_main_clusters = run.n_touched = 0;
  const int above = data.tree.anc[at(run.clip)];
  touch(run, data.cluster_of[at(run.clip)]);
  if (above != data.n) touch(run, data.cluster_of[at(above)]);
  walk_subtree(run);
  split_touched(run, above);
  for (int c = 0; c < run.cut.count; ++c) {
    if (data.clusters[at(c)].n_main > 0) run.main_clusters[at(run.n_main_clusters++)] = c;
  }
}

void restore_cluster_lists(swap_run& run) {
  for (int i = 0; i < run.n_touched; ++i) {
    const int c = run.touched[at(i)];
    cluster_record& record = run.data.clusters[at(c)];
    const int first = run.cut.start[at(c)];
    record.main_nodes = run.cut.nodes_in.data() + first;
    record.n_main = run.cut.start[at(c + 1)] - first;
    record.n_clip = 0;
  }
  run.n_touched = 0;
}

}  // namespace zeb
