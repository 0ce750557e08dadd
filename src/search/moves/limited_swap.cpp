#include "search/moves/limited_swap.h"

#include "base/indices.h"
#include "search/moves/swap_run.h"

namespace zeb {
namespace {

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
      if (!within || !run.slots_allow(joining::nodes, u, v, &cost)) continue;
      if (run.take_candidate(u, v, cost)) return;
    }
    if (run.store_noted(u)) return;
  }
}

}  // namespace

double limited_tbr_swap(search_context& context, std::span<std::int32_t> anc,
                        const swap_task& task) {
  swap_run run(context, swap_run::swap_kind::limited, anc, task);
  while (run.next_clip()) {
    if (!run.begin_clip()) continue;
    try_near(run);
    run.finish_clip();
  }
  return run.finish();
}

}  // namespace zeb
