#include "search/moves/swapper.h"

#include "base/indices.h"
#include "search/moves/clipping.h"
#include "search/moves/move_store.h"

namespace zeb {
namespace {

// ---- SPR: the clip keeps its root and is tried on the branches of the main tree ----

/// Branches of the main tree below the outgroup's, breadth first. Two descendants at a time were
/// tested against the union of their sets once; with the batch kernel that costs more than it
/// saves.
int list_branches(swap_run& run) {
  const search_data& data = run.data;
  const std::span<std::int32_t> list = run.scan_list;
  if (run.constraints_in_force)
    return run.constraints_in_force->list_open_main(data, run.sister, list, data.nodes);
  int count = 0;
  list[at(count++)] = data.tree.sister[0];
  for (int i = 0; i < count; ++i) {
    const int v = list[at(i)];
    if (v < data.n) continue;
    list[at(count++)] = data.tree.first[at(v)];
    list[at(count++)] = data.tree.second[at(v)];
  }
  return count;
}

void regraft(swap_run& run) {
  const search_data& data = run.data;
  const join_side own = run.clip_side(run.home_root);
  const word* clip_words = run.clip_words(run.home_root);
  const int count = list_branches(run);
  int i = 0;
  for (;;) {
    double cost = 0;
    i = run.scan(clip_words, data.branch_base, run.scan_list.data(), i, count, &cost);
    if (i >= count) break;
    const int v = run.scan_list[at(i++)];
    if (v == run.sister || !run.others_allow(own, run.target_side(v), &cost)) continue;
    if (run.take_candidate(run.home_root, v, cost)) return;
  }
  store_noted(run, run.home_root);
}

// ---- TBR in the neighbourhood of the clip's place ----

/// Branches in breadth-first order from one of them, with the distance and the end they go on from.
struct branch_walk {
  std::span<std::int32_t> list;
  std::span<std::int32_t> distance;  // twice the nodes between; odd: goes on upward
  int count = 0;

  void put(int v, int nodes_between, bool upward) {
    list[at(count)] = v;
    distance[at(count++)] = 2 * nodes_between + (upward ? 1 : 0);
  }
  void put_descendants(const search_data& data, int v, int d) {
    if (v < data.n) return;
    put(data.tree.first[at(v)], d, false);
    put(data.tree.second[at(v)], d, false);
  }
};

/// Branches of the main tree within `limit` nodes of the branch above `start`. A branch is met
/// once: those on the way to the root are met from below and go on upward, the others from above.
void main_branches_near(const search_data& data, int start, int limit, branch_walk& walk) {
  walk.put(start, 0, true);
  if (limit > 0) walk.put_descendants(data, start, 1);
  for (int i = 0; i < walk.count; ++i) {
    const int v = walk.list[at(i)];
    const int d = walk.distance[at(i)] / 2;
    const bool upward = walk.distance[at(i)] % 2 != 0;
    if (d >= limit) continue;
    if (!upward) {
      walk.put_descendants(data, v, d + 1);
    } else if (const int above = data.tree.anc[at(v)]; above != data.n) {
      walk.put(above, d + 1, true);
      walk.put(data.tree.sister[at(v)], d + 1, false);
    }
  }
}

/// Branches of the clipped subtree within `limit` nodes of its root branch, which both descendants
/// of the clip share and the second stands for.
void clip_branches_near(const search_data& data, int clip, int limit, branch_walk& walk) {
  if (clip < data.n) {
    walk.put(clip, 0, false);
    return;
  }
  const int second = data.tree.second[at(clip)];
  walk.put(second, 0, false);
  if (limit > 0) walk.put_descendants(data, data.tree.first[at(clip)], 1);
  for (int i = 0; i < walk.count; ++i) {
    const int d = walk.distance[at(i)] / 2;
    if (d < limit) walk.put_descendants(data, walk.list[at(i)], d + 1);
  }
}

void try_near(swap_run& run) {
  const search_data& data = run.data;
  const std::size_t nodes = at(data.nodes);
  branch_walk main{run.scan_list.subspan(0, nodes), run.scratch.subspan(0, nodes)};
  branch_walk subtree{run.scan_list.subspan(nodes), run.scratch.subspan(nodes)};
  if (run.sister == 0) {
    main.put(0, 0, false);
  } else {
    main_branches_near(data, run.sister, run.rules.swap.move_limit, main);
  }
  clip_branches_near(data, run.clip, run.rules.swap.move_limit, subtree);
  for (int k = 0; k < subtree.count; ++k) {
    const int u = subtree.list[at(k)];
    const word* clip_words = run.clip_words(u);
    for (int i = 0; i < main.count; ++i) {
      const int v = main.list[at(i)];
      if (v == run.sister && u == run.home_root) continue;
      double cost = 0;
      constexpr std::int32_t alone = 0;
      const bool within = run.scan(clip_words, run.target_words(v), &alone, 0, 1, &cost) == 0;
      if (!within || !run.others_allow(run.clip_side(u), run.target_side(v), &cost)) continue;
      if (run.take_candidate(u, v, cost)) return;
    }
    if (store_noted(run, u)) return;
  }
}

/// Reconnections within `move_limit` nodes of where the clip was, in the main tree and in the
/// subtree; no clusters.
double limited_tbr_swap(search_context& context, std::span<std::int32_t> anc,
                        const swap_task& task) {
  swap_run run(context, swap_run::swap_kind::limited, anc, task);
  while (next_clip(run)) {
    if (!begin_clip(run)) continue;
    try_near(run);
    finish_clip(run);
  }
  return run.finish();
}

// ---- TBR: three nested levels, cluster against cluster, node against cluster, node against node,
// each with an early exit against the bound ----

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
    if (!run.others_allow(run.clip_side(u), run.target_side(v), &cost)) continue;
    if (run.take_candidate(u, v, cost)) return true;
  }
  return store_noted(run, u);
}

bool try_branches(swap_run& run, int u, const word* clip_words, const cluster_record& main) {
  return try_branches(run, u, main, [&](int from, double* cost) {
    return run.scan(clip_words, run.data.branch_base, main.main_nodes, from, main.n_main, cost);
  });
}

/// All branches that are open to the clip, where they are few.
void try_open(swap_run& run) {
  const auto main = run.scan_list.first(at(run.n_open_main));
  const auto subtree = run.scan_list.subspan(at(run.data.nodes), at(run.n_open_subtree));
  for (const int u : subtree) {
    const word* clip_words = run.clip_words(u);
    for (int i = 0;;) {
      double cost = 0;
      i = run.scan(clip_words, run.data.branch_base, main.data(), i, run.n_open_main, &cost);
      if (i >= run.n_open_main) break;
      const int v = main[at(i++)];
      if (v == run.sister && u == run.home_root) continue;
      if (!run.others_allow(run.clip_side(u), run.target_side(v), &cost)) continue;
      if (run.take_candidate(u, v, cost)) return;
    }
    if (store_noted(run, u)) return;
  }
}

/// Calls `compare(main)` with each main cluster within the bound of `words`, which are those of
/// `from`, until it says that the clip is done.
template <class comparison>
bool try_clusters(swap_run& run, join_side from, const word* words, comparison&& compare) {
  int q = 0;
  for (;;) {
    double cost = 0;
    q = run.scan_clusters(words, run.data.union_base, run.main_clusters.data(), q,
                          run.n_main_clusters, &cost);
    if (q >= run.n_main_clusters) return false;
    const int cluster = run.main_clusters[at(q++)];
    if (!run.others_allow(from, {join_end::cluster, cluster}, &cost)) continue;
    if (compare(cluster)) return true;
  }
}

/// A clip of one or two terminals has one rooting: its root against the clusters, then their nodes.
void one_rooting(swap_run& run) {
  const word* clip_words = run.clip_words(run.home_root);
  try_clusters(run, run.clip_side(run.home_root), clip_words, [&](int main) {
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
    i = run.scan_clusters(main.union_now, data.branch_base, subtree.clip_nodes, i, subtree.n_clip,
                          &cost);
    if (i >= subtree.n_clip) return false;
    const int u = subtree.clip_nodes[i++];
    if (!run.others_allow(run.clip_side(u), {join_end::cluster, main_cluster}, &cost)) continue;
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
        try_clusters(run, {join_end::cluster, subtree}, run.data.clusters[at(subtree)].union_now,
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
      if (u == run.home_root || !run.others_allow(run.clip_side(u), run.target_side(0), &cost))
        continue;
      if (run.take_candidate(u, 0, cost) || store_noted(run, u)) return;
    }
  }
}

}  // namespace

double spr_swap(search_context& context, std::span<std::int32_t> anc, const swap_task& task) {
  swap_run run(context, swap_run::swap_kind::spr, anc, task);
  while (next_clip(run)) {
    if (!begin_clip(run)) continue;
    regraft(run);
    finish_clip(run);
  }
  return run.finish();
}

double tbr_swap(search_context& context, std::span<std::int32_t> anc, const swap_task& task) {
  if (context.rules.swap.move_limit > 0) return limited_tbr_swap(context, anc, task);
  swap_run run(context, swap_run::swap_kind::tbr, anc, task);
  while (next_clip(run)) {
    if (!begin_clip(run)) continue;
    if (run.sister == 0) {
      outgroup_rootings(run);
    } else if (run.n_open_main > 0) {
      try_open(run);
    } else if (run.cut.below[at(run.clip)] < 3) {
      one_rooting(run);
    } else {
      all_rootings(run);
    }
    finish_clip(run);
  }
  return run.finish();
}

}  // namespace zeb
