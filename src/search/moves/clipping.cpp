#include "search/moves/clipping.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "console/output.h"
#include "engine/fit/implied_weighting.h"
#include "engine/joining.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/undo.h"
#include "engine/passes/waves.h"
#include "search/moves/cluster_lists.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {
namespace {

bool may_clip(const swap_run& run, int c) {
  if (c == run.data.n) return false;
  if (run.first_pass && run.cut.below[at(c)] < 3) return false;
  if (run.enumeration && !run.enumeration->may_clip(c)) return false;
  if (run.kind == swap_run::swap_kind::spr) {
    // The regrafts of these are those of other clips.
    const int above = run.data.tree.anc[at(c)];
    if (above == run.data.n) return false;
    if (run.data.tree.anc[at(above)] == run.data.n && run.data.tree.sister[at(c)] < run.data.n)
      return false;
  }
  return c != 0 && (!run.constraints_in_force || run.constraints_in_force->begin_clip(run.data, c));
}

void count_rearrangements(swap_run& run, int c) {
  const std::int64_t s = run.cut.below[at(c)];
  std::int64_t moves = std::max<std::int64_t>(1, 2 * (run.data.n - s) - 3);
  if (run.kind != swap_run::swap_kind::spr) moves *= std::max<std::int64_t>(1, 2 * s - 3);
  run.context.rearrangements.add(static_cast<std::uint64_t>(moves));
}

/// Under constraints, where little is open to the clip: lists it. Clusters aren't needed then.
bool list_few_open(swap_run& run) {
  constexpr int most_pairs = 400;
  run.n_open_main = run.n_open_subtree = 0;
  if (!run.constraints_in_force || run.joint < 0) return false;
  const search_constraints& obeyed = *run.constraints_in_force;
  if (!obeyed.closes_any()) return false;
  const int main = obeyed.list_open_main(run.data, run.sister, run.scan_list, most_pairs / 8);
  if (main > most_pairs / 8) return false;
  const int most = most_pairs / main;
  const int subtree =
      obeyed.list_open_subtree(run.data, run.scan_list.subspan(at(run.data.nodes)), most);
  if (subtree > most) return false;
  run.n_open_main = main;
  run.n_open_subtree = subtree;
  return true;
}

void detach_clip(swap_run& run) {
  tree_arrays& tree = run.data.tree;
  run.sister = tree.sister[at(run.clip)];
  run.home_root = run.clip < run.data.n ? run.clip : tree.second[at(run.clip)];
  run.home_first = run.clip < run.data.n ? run.clip : tree.first[at(run.clip)];
  if (run.sister == 0) {
    // The whole ingroup: what is left is terminal 0 alone, with its own states.
    run.joint = -1;
    pass_ingroup_alone(run);
    return;
  }
  begin_undo(run.data);
  run.joint = detach(tree, run.clip);
  repair_after_clip(run.data, run.sister, run.clip);
}

/// Under implied weights the steps of joining are taken off the counters, so that all other places
/// are costed by what the two halves have.
void cost_home(swap_run& run) {
  const join_side own = run.clip_side(run.home_root);
  const join_side other = run.target_side(run.sister);
  run.home_cost = run.fits && run.joint >= 0 ? remove_home_steps(run.data, own, other)
                                             : join_cost(run.data, own, other, no_bound);
  if (run.judge) run.home_cost += run.judge->begin_clip();
}

void put_clip_back(swap_run& run) {
  if (run.kind == swap_run::swap_kind::tbr) restore_cluster_lists(run);
  if (run.fits && run.joint >= 0) {
    add_attachment_steps(run.data, run.clip_side(run.home_root), run.target_side(run.sister));
  }
  if (run.joint < 0) {
    full_pass(run.data);
    unite_clusters(run.data, run.cut);
    return;
  }
  attach(run.data.tree, run.clip, run.joint, run.sister);
  if (undo_sets(run.data)) return;
  // Too much was noted.
  full_pass(run.data);
  unite_clusters(run.data, run.cut);
}

void tell_wrong_score(const swap_run& run, double error) {
  if (run.kind == swap_run::swap_kind::spr) {
    emitf("\nOOpps --- spr, move %i -> %i, score is %s", run.clip, run.best_branch,
          score_text(run.data, run.score).c_str());
  } else {
    emitf("\nOOpps --- tbr, move %i(%i) -> %i, score is %s", run.clip, run.best_root,
          run.best_branch, score_text(run.data, run.score).c_str());
  }
  emitf(" error: %g", error);
}

void apply_move(swap_run& run) {
  if (run.kind == swap_run::swap_kind::tbr) restore_cluster_lists(run);
  const bool quick = !run.rules.swap.safe_unclip && !run.data.has_asymmetric && run.joint >= 0;
  const double expected = run.score_without + run.best_here;
  end_undo(run.data);
  if (quick) {
    if (run.fits)
      add_attachment_steps(run.data, run.clip_side(run.best_root),
                           run.target_side(run.best_branch));
    if (run.best_root != run.home_root) reroot_subtree(run.data, run.best_root, run.clip);
    attach(run.data.tree, run.clip, run.joint, run.best_branch);
    repair_after_insert(run.data, run.clip);
    if (run.fits) run.score = total_fit(run.data);
  } else {
    if (run.best_root != run.home_root) reroot_links(run.data.tree, run.best_root, run.clip);
    if (run.joint >= 0) attach(run.data.tree, run.clip, run.joint, run.best_branch);
    run.score = full_pass(run.data);
  }
  if (run.judge) {
    run.judge->tree_changed();
    if (run.fits || !quick) run.score += run.judge->score();
  }
  if (!run.agree(run.score, expected)) tell_wrong_score(run, run.score - expected);
  if (run.constraints_in_force) run.constraints_in_force->tree_changed();
  run.tree_changed();
  begin_undo(run.data);
  run.first_pass = false;
  ++run.context.moves_done;
}

}  // namespace

bool next_clip(swap_run& run) {
  while (!run.given_up) {
    if (run.counter >= run.data.nodes) {
      if (!run.judge || !run.judge->begins_anew()) break;
      run.counter = 0;
    }
    ++run.counter;
    if (++run.position >= run.data.nodes) run.position = 1;
    run.clip = run.clip_order.empty() ? run.position : run.clip_order[at(run.position)];
    if (!run.enumeration && --run.clips_to_report <= 0) {
      run.clips_to_report = run.report_every;
      report_status(run.context, run.score, false);
    }
    if (run.enumeration && run.enumeration->progress)
      run.enumeration->progress(run.enumeration->receiver, run.counter - 1);
    if (interrupted()) return false;
    if (run.perturbing && run.perturbing->is_over(run.data.nodes)) return false;
    if (run.clip == run.data.n) continue;
    if (run.share) {
      if (!run.share->clips[at(run.clip)]) continue;
      if (run.share->look(run.share->receiver, run.data, run.score)) return false;
    }
    if (run.perturbing) ++run.perturbing->clips;
    count_rearrangements(run, run.clip);
    if (may_clip(run, run.clip)) return true;
  }
  return false;
}

bool begin_clip(swap_run& run) {
  run.n_moves = 0;
  run.chosen = -1;
  run.restart = false;
  if (run.trees_wanted && !run.enumeration && !run.marks_known && search_level(run.context) > 0) {
    mark_tree_in_work(run.context, run.marks);
    run.marks_known = true;
  }
  detach_clip(run);
  if (run.kind == swap_run::swap_kind::tbr && !list_few_open(run)) make_cluster_lists(run);
  cost_home(run);
  run.best_here = run.home_cost;
  run.score_without = run.score - run.home_cost;
  run.best_branch = run.sister;
  run.best_root = run.home_root;
  run.set_bound();
  if (run.home_cost == 0 && !run.trees_wanted) {
    put_clip_back(run);
    return false;
  }
  return true;
}

void finish_clip(swap_run& run) {
  if (run.judge) run.judge->judge();
  if (!run.has_moved()) {
    put_clip_back(run);
    return;
  }
  const double score_before = run.score_without + run.home_cost;
  apply_move(run);
  if (run.perturbing) {
    run.perturbing->note_move(run.score - score_before, {run.clip, run.sister, run.best_branch});
  }
  run.counter = run.multi == 0 ? 1 : 0;
  run.set_slack();
}

}  // namespace zeb
