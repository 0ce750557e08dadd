#include "search/moves/move_store.h"

#include <algorithm>

#include "base/indices.h"
#include "engine/fit/implied_weighting.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/waves.h"
#include "search/moves/relative_fit.h"
#include "search/store/stored_trees.h"

namespace zeb {
namespace {

/// Makes the trees of one clip and one rooting `u`, one at a time. As long as it lives the subtree
/// is rooted on `u`; its links, and its sets where they were changed, come back with the end.
class tree_maker {
 public:
  tree_maker(swap_run& run, int u)
      : run_(run), u_(u), with_sets_(search_level(run.context) > 0), turned_(u != run.home_root) {
    if (!turned_ || run.joint < 0) return;
    if (with_sets_) {
      reroot_subtree(run.data, u, run.clip);
    } else {
      reroot_links(run.data.tree, u, run.clip);
    }
  }
  ~tree_maker() {
    search_data& data = run_.data;
    if (run_.joint < 0) {
      if (with_sets_) pass_ingroup_alone(run_);
    } else if (turned_ && with_sets_) {
      reroot_subtree(data, run_.turned_home(), run_.clip);
      repair_after_clip(data, run_.sister, run_.clip);
    } else if (turned_) {
      reroot_links(data.tree, run_.turned_home(), run_.clip);
    }
  }
  tree_maker(const tree_maker&) = delete;
  tree_maker& operator=(const tree_maker&) = delete;

  /// Calls `use(tree, marks)` with the tree whose clip is attached to the branch above `v`.
  template <class function>
  bool with_tree(int v, function use) {
    search_data& data = run_.data;
    if (run_.joint < 0) {
      if (turned_) reroot_links(data.tree, u_, run_.clip);
      if (with_sets_) full_pass(data);
    } else {
      attach(data.tree, run_.clip, run_.joint, v);
      if (with_sets_) repair_after_insert(data, run_.clip);
    }
    std::span<const std::uint8_t> marks;
    if (with_sets_) {
      mark_tree_in_work(run_.context, run_.new_marks);
      marks = run_.new_marks;
    }
    const bool result = use(std::span<const std::int32_t>(data.tree.anc), marks);
    if (run_.joint < 0) {
      if (turned_) reroot_links(data.tree, run_.turned_home(), run_.clip);
    } else {
      detach(data.tree, run_.clip);
      if (with_sets_) repair_after_clip(data, v, run_.clip);
    }
    return result;
  }

 private:
  swap_run& run_;
  int u_;
  bool with_sets_;
  bool turned_;
};

int staying_node(const swap_run& run, int v) {
  while (v != run.data.n && !run.marks[at(v)]) v = run.data.tree.anc[at(v)];
  return v;
}

/// Does the move lead nowhere new? With the rooting kept, the exchange of two sisters is met from
/// the other side too; and where the branches between the two places are collapsed, the move only
/// reshuffles a polytomy.
bool is_idle(const swap_run& run, int u, int v) {
  if (u != run.home_root || run.joint < 0) return false;
  const int target_above = run.data.tree.anc[at(v)];
  const int sister_above = run.data.tree.anc[at(run.sister)];
  if (target_above == sister_above && run.chosen < 0) return true;
  if (search_level(run.context) == 0 || !run.rules.collapse.quick || run.marks[at(run.joint)]) {
    return false;
  }
  return staying_node(run, target_above) == staying_node(run, sister_above);
}

/// Tries to put the tree of the chosen candidate into the slot of the tree being swapped; false if
/// the store holds it already.
bool replace_in_store(swap_run& run, int u) {
  const swap_candidate chosen = run.move_list[at(run.chosen)];
  const int slot = run.context.swapping_index;
  tree_maker maker(run, u);
  const bool replaced = maker.with_tree(chosen.branch, [&](auto tree, auto marks) {
    return replace_stored(run.context, tree, slot, chosen.score, marks);
  });
  if (replaced) ++run.context.moves_done;
  return replaced;
}

/// Worse trees are wanted only within the relative limit too.
void cancel_worse_in_relation(swap_run& run, int u) {
  const double allowed = run.rules.relative_suboptimal;
  if (allowed <= 0) return;
  const clip_place home{run.clip_side(run.home_root), run.target_side(run.sister)};
  const double home_score = run.score_without + run.home_cost;
  for (swap_candidate& move : run.move_list.first(at(run.n_moves))) {
    if (move.score <= home_score + run.rounding) continue;
    const clip_place there{run.clip_side(u), run.target_side(move.branch)};
    if (relative_fit_difference(run.data, home, there, true) > allowed) move.branch = -1;
  }
}

/// Stores the noted candidates with rooting `u`; true if the chosen one is in the store already.
bool store_moves(swap_run& run, int u) {
  search_context& context = run.context;
  cancel_worse_in_relation(run, u);
  bool chosen_is_known = false;
  const score_kind kind = kind_of_scores(run.data);
  const double limit =
      run.chosen >= 0 ? run.move_list[at(run.chosen)].score + run.rules.suboptimal : no_bound;
  if (run.chosen > 0) std::swap(run.move_list[0], run.move_list[at(run.chosen)]);
  tree_maker maker(run, u);
  for (int i = 0; i < run.n_moves && context.trees.ntrees < run.multi; ++i) {
    const swap_candidate move = run.move_list[at(i)];
    if (move.branch < 0 || !is_within_bound(move.score, limit, kind)) continue;
    if (!is_within_bound(move.score, context.score_limit, kind)) continue;
    if (is_idle(run, u, move.branch)) continue;
    const bool is_new = maker.with_tree(move.branch, [&](auto tree, auto marks) {
      return store_marked(context, tree, context.trees.ntrees, move.score, marks);
    });
    if (is_new) ++context.moves_done;
    if (!is_new && i == 0 && run.chosen >= 0 && run.rules.suboptimal == 0) {
      chosen_is_known = true;
    }
  }
  return chosen_is_known;
}

/// The sum of the costs of steps differs from the score by rounding, which would pile up.
void make_scores_exact(swap_run& run, int u) {
  for (int i = 0; i < run.n_moves; ++i) {
    swap_candidate& move = run.move_list[static_cast<std::size_t>(i)];
    move.score = exact_score(run.data, run.clip_side(u), run.target_side(move.branch));
  }
  if (run.chosen >= 0) run.score = run.move_list[static_cast<std::size_t>(run.chosen)].score;
}

void store_trees(swap_run& run, int u) {
  const bool better = run.chosen >= 0 && run.score < run.stored_score - run.rounding;
  if (better) {
    run.context.score_limit = std::min(run.context.score_limit, run.score + run.rules.suboptimal);
    purge_above(run.context, run.score + run.rules.suboptimal, run.first_slot);
  }
  run.set_slack();
  const int slot = run.context.swapping_index;
  const bool own_slot_is_worse =
      better && slot >= 0 &&
      (run.buffer_full ||
       run.score + run.rules.suboptimal + run.rounding < record_of(run.context, slot).score);
  if (own_slot_is_worse) {
    run.restart = replace_in_store(run, u);
    run.given_up = !run.restart;
  } else {
    run.given_up = store_moves(run, u);
  }
  run.stored_score = std::min(run.stored_score, run.score);
  run.set_slack();
  run.set_bound();
}

}  // namespace

bool store_noted(swap_run& run, int u) {
  if (run.n_moves == 0) return false;
  if (run.fits && !run.judge) make_scores_exact(run, u);
  if (run.enumeration) {
    const double limit = run.stored_score + run.rules.suboptimal + run.rounding;
    for (int i = 0; i < run.n_moves; ++i) {
      const swap_candidate& move = run.move_list[static_cast<std::size_t>(i)];
      if (move.score > limit) continue;
      run.enumeration->meet(run.enumeration->receiver,
                            {&run.data,
                             run.clip,
                             run.sister,
                             move.branch,
                             run.home_root,
                             u,
                             move.score,
                             run.stored_score,
                             {run.clip_side(run.home_root), run.target_side(run.sister)},
                             {run.clip_side(u), run.target_side(move.branch)}});
    }
  } else if (!run.single_tree()) {
    store_trees(run, u);
  }
  run.n_moves = 0;
  run.chosen = -1;
  return run.restart || run.given_up;
}

}  // namespace zeb
