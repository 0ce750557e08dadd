// Subtree pruning and regrafting: the clip keeps its root and is tried on the branches of the main
// tree from the root down.
#include "base/indices.h"
#include "search/moves/swap_run.h"
#include "search/moves/swapper.h"

namespace zeb {
namespace {

/// Branches of the main tree below the outgroup's, breadth first. Two descendants at a time were
/// tested against the union of their sets once; with the batch kernel that costs more than it
/// saves.
int list_branches(swap_run& run) {
  const search_data& data = run.data;
  const std::span<std::int32_t> list = run.scan_list;
  int count = 0;
  list[at(count++)] = run.at(data.tree.sister, 0);
  for (int i = 0; i < count; ++i) {
    const int v = list[at(i)];
    if (v < data.n) continue;
    list[at(count++)] = run.at(data.tree.first, v);
    list[at(count++)] = run.at(data.tree.second, v);
  }
  return count;
}

void regraft(swap_run& run) {
  const search_data& data = run.data;
  const word* clip_words = run.clip_words(run.home_root);
  const int count = list_branches(run);
  int i = 0;
  for (;;) {
    double cost = 0;
    i = run.scan(clip_words, data.branch_base, run.scan_list.data(), i, count, &cost);
    if (i >= count) break;
    const int v = run.scan_list[at(i++)];
    if (v == run.sister || !run.slots_allow(joining::nodes, run.home_root, v, &cost)) continue;
    if (run.take_candidate(run.home_root, v, cost)) return;
  }
  run.store_noted(run.home_root);
}

}  // namespace

double spr_swap(search_context& context, std::span<std::int32_t> anc, const swap_task& task) {
  swap_run run(context, swap_run::swap_kind::spr, anc, task);
  while (run.next_clip()) {
    if (!run.begin_clip()) continue;
    regraft(run);
    run.finish_clip();
  }
  return run.finish();
}

}  // namespace zeb
