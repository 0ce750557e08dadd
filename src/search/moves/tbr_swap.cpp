// Tree bisection and reconnection: three nested levels, cluster against cluster, node against
// cluster, node against node, each with an early exit against the bound.
#include "base/indices.h"
#include "search/moves/limited_swap.h"
#include "search/moves/swap_run.h"
#include "search/moves/swapper.h"

namespace zeb {
namespace {

/// All branches of one main cluster against one branch of the subtree. `scan(from, &cost)` gives
/// the place of the next one within the bound. True: the clip is done.
template <class scanner>
bool try_branches(swap_run& run, int u, const cluster_record& main, scanner&& scan) {
  int i = 0;
  for (;;) {
    double cost = 0;
    i = scan(i, &cost);
    if (i >= main.n_main) break;
    const int v = main.main_nodes[i++];
    if (v == run.sister && u == run.home_root) continue;
    if (!run.slots_allow(joining::nodes, u, v, &cost)) continue;
    if (run.take_candidate(u, v, cost)) return true;
  }
  return run.store_noted(u);
}

bool try_branches(swap_run& run, int u, const word* clip_words, const cluster_record& main) {
  return try_branches(run, u, main, [&](int from, double* cost) {
    return run.scan(clip_words, run.data.branch_base, main.main_nodes, from, main.n_main, cost);
  });
}

/// Calls `compare(main)` with each main cluster within the bound of `words`, which are those of
/// `clip_side`, until it says that the clip is done.
template <class comparison>
bool try_clusters(swap_run& run, joining level, int clip_side, const word* words,
                  comparison&& compare) {
  int q = 0;
  for (;;) {
    double cost = 0;
    q = run.scan(words, run.data.union_base, run.main_clusters.data(), q, run.n_main_clusters,
                 &cost);
    if (q >= run.n_main_clusters) return false;
    const int cluster = run.main_clusters[at(q++)];
    if (!run.slots_allow(level, clip_side, cluster, &cost)) continue;
    if (compare(cluster)) return true;
  }
}

/// A clip of one or two terminals has one rooting: its root against the clusters, then their nodes.
void one_rooting(swap_run& run) {
  const word* clip_words = run.clip_words(run.home_root);
  try_clusters(run, joining::node_with_cluster, run.home_root, clip_words, [&](int main) {
    return try_branches(run, run.home_root, clip_words, run.data.clusters[at(main)]);
  });
}

/// The branches of one subtree cluster against one main cluster. True: the clip is done.
bool cluster_pair(swap_run& run, int subtree_cluster, int main_cluster) {
  const search_data& data = run.data;
  const cluster_record& subtree = data.clusters[at(subtree_cluster)];
  const cluster_record& main = data.clusters[at(main_cluster)];
  int i = 0;
  for (;;) {
    double cost = 0;
    i = run.scan(main.union_now, data.branch_base, subtree.clip_nodes, i, subtree.n_clip, &cost);
    if (i >= subtree.n_clip) return false;
    const int u = subtree.clip_nodes[i++];
    if (!run.slots_allow(joining::node_with_cluster, u, main_cluster, &cost)) continue;
    if (try_branches(run, u, run.branch(u), main)) return true;
  }
}

/// The same over the words that can tell the branches of the two clusters apart.
bool narrow_cluster_pair(swap_run& run, int subtree_cluster, int main_cluster) {
  const search_data& data = run.data;
  const cluster_record& subtree = data.clusters[at(subtree_cluster)];
  const cluster_record& main = data.clusters[at(main_cluster)];
  const std::span<const std::int32_t> subtree_nodes(subtree.clip_nodes, at(subtree.n_clip));
  const std::span<const std::int32_t> main_nodes(main.main_nodes, at(main.n_main));
  if (!run.narrow.prepare(data, subtree_nodes, main_nodes, run.rules.swap.use_inters == 2,
                          run.step_bound))
    return false;
  for (int i = 0; i < subtree.n_clip; ++i) {
    const bool done = try_branches(run, subtree.clip_nodes[i], main, [&](int from, double* cost) {
      std::int32_t steps = 0;
      const int found = run.narrow.scan(data, i, from, run.step_bound, &steps);
      *cost = steps;
      return found;
    });
    if (done) return true;
  }
  return false;
}

void all_rootings(swap_run& run) {
  // The narrow form counts fields, so it needs weights of 1.
  const auto compare =
      run.rules.swap.use_inters > 0 && run.data.uniform_mode ? narrow_cluster_pair : cluster_pair;
  for (int p = 0; p < run.n_clip_clusters; ++p) {
    const int subtree = run.clip_clusters[at(p)];
    const bool done =
        try_clusters(run, joining::clusters, subtree, run.data.clusters[at(subtree)].union_now,
                     [&](int main) { return compare(run, subtree, main); });
    if (done) return;
  }
}

/// The ingroup as a whole against terminal 0: every branch may take the outgroup.
void outgroup_rootings(swap_run& run) {
  const search_data& data = run.data;
  for (int p = 0; p < run.n_clip_clusters; ++p) {
    const cluster_record& subtree = data.clusters[at(run.clip_clusters[at(p)])];
    int i = 0;
    for (;;) {
      double cost = 0;
      i = run.scan(run.target_words(0), data.branch_base, subtree.clip_nodes, i, subtree.n_clip,
                   &cost);
      if (i >= subtree.n_clip) break;
      const int u = subtree.clip_nodes[i++];
      if (u == run.home_root || !run.slots_allow(joining::nodes, u, 0, &cost)) continue;
      if (run.take_candidate(u, 0, cost) || run.store_noted(u)) return;
    }
  }
}

}  // namespace

double tbr_swap(search_context& context, std::span<std::int32_t> anc, const swap_task& task) {
  if (context.rules.swap.move_limit > 0) return limited_tbr_swap(context, anc, task);
  swap_run run(context, swap_run::swap_kind::tbr, anc, task);
  while (run.next_clip()) {
    if (!run.begin_clip()) continue;
    if (run.sister == 0) {
      outgroup_rootings(run);
    } else if (run.at(run.cut.below, run.clip) < 3) {
      one_rooting(run);
    } else {
      all_rootings(run);
    }
    run.finish_clip();
  }
  return run.finish();
}

}  // namespace zeb
