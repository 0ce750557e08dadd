#include "search/moves/swap_run.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/random.h"
#include "console/output.h"
#include "engine/fit/implied_weighting.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/undo.h"
#include "engine/passes/waves.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {

namespace {

constexpr int moves_between_cuts = 8;
constexpr double fit_slack = 0.001;  // the fit kernels finish below their bound only

template <class T>
std::span<T> per_node(const search_data& data, std::size_t times = 1) {
  return calloc_low<T>(static_cast<std::size_t>(data.nodes) * times);
}

}  // namespace

swap_run::swap_run(search_context& search, swap_kind kind_of_swap, std::span<std::int32_t> tree,
                   const swap_task& task)
    : context(search),
      data(search.data),
      rules(search.rules),
      kind(kind_of_swap),
      anc(tree),
      first_slot(task.first_slot),
      multi(std::max(task.multi, 0)),
      first_pass(task.multi < 0),
      trees_wanted(task.multi > 0 || task.enumeration),
      enumeration(task.enumeration),
      fits(data.implied_on),
      rounding(tolerance_of(kind_of_scores(data))),
      slots(search.slots),
      slots_are_bound(slots.any()) {
  scratch = per_node<std::int32_t>(data, 2);
  scan_list = per_node<std::int32_t>(data, 2);
  marks = per_node<std::uint8_t>(data);
  new_marks = per_node<std::uint8_t>(data);
  depth = per_node<std::int32_t>(data);
  if (trees_wanted) move_list = per_node<swap_candidate>(data);
  cut = allocate_clusters(data, rules.swap.cluster_size);
  const std::size_t most = data.clusters.size();
  main_clusters = calloc_low<std::int32_t>(most);
  clip_clusters = calloc_low<std::int32_t>(most);
  touched = calloc_low<std::int32_t>(2 * most);
  const bool promising_first = task.promising_first && multi == 0;
  if (rules.swap.random_clip || promising_first) clip_order = per_node<std::int32_t>(data);

  score = tree_length(data, anc);
  stored_score = score;
  data.in_swap = true;
  if (rules.swap.random_clip) {
    random_sequence(context.random, data.nodes, clip_order, 0, {});
  } else if (promising_first) {
    promising_clips_first(data, clip_order);
  }
  report_every = rules.clips_between_reports;
  if (report_every == 0) report_every = data.n < 50 ? 2 : 10;
  clips_to_report = report_every;
  tree_changed();
  begin_undo(data);
  set_slack();
}

swap_run::~swap_run() {
  end_undo(data);
  data.in_swap = false;
  release_clusters(data);
}

/// The waves of a move widen the unions, so the clusters stay good for a while; cutting them afresh
/// after every move took a fifth of the time on 1,600 taxa.
void swap_run::tree_changed() {
  marks_known = false;
  if (moves_since_cut++ % moves_between_cuts == 0) {
    cut_clusters(data, cut);
  } else {
    count_terminals_below(data, cut.below);
  }
}

void swap_run::set_slack() {
  buffer_full = multi > 0 && context.trees.ntrees >= multi;
  const bool more_wanted = enumeration || (multi > 0 && !buffer_full);
  if (!more_wanted) {
    swap_slack = fits ? fit_slack : -1.0;
  } else if (rules.suboptimal > 0) {
    context.score_limit = std::min(context.score_limit, score + rules.suboptimal);
    swap_slack = std::max(context.score_limit - score, 0.0);
    if (enumeration) swap_slack = rules.suboptimal;
    if (fits) swap_slack += fit_slack;
  } else {
    swap_slack = fits ? fit_slack : 0;
  }
}

void swap_run::set_bound() {
  bound = best_here + std::min(swap_slack, 1e9);
  step_bound = static_cast<std::int32_t>(std::floor(std::min(bound, 1e9)));
}

bool swap_run::may_clip(int c) const {
  if (c == data.n) return false;
  if (first_pass && at(cut.below, c) < 3) return false;
  if (enumeration && !enumeration->may_clip(c)) return false;
  if (kind == swap_kind::spr) {
    // The regrafts of these are those of other clips.
    const int above = at(data.tree.anc, c);
    if (above == data.n) return false;
    if (at(data.tree.anc, above) == data.n && at(data.tree.sister, c) < data.n) return false;
  }
  return c != 0;
}

void swap_run::count_rearrangements(int c) {
  const std::int64_t s = at(cut.below, c);
  std::int64_t moves = std::max<std::int64_t>(1, 2 * (data.n - s) - 3);
  if (kind != swap_kind::spr) moves *= std::max<std::int64_t>(1, 2 * s - 3);
  context.rearrangements.add(static_cast<std::uint64_t>(moves));
}

bool swap_run::next_clip() {
  while (counter < data.nodes && !given_up) {
    ++counter;
    if (++position >= data.nodes) position = 1;
    clip = clip_order.empty() ? position : at(clip_order, position);
    if (!enumeration && --clips_to_report <= 0) {
      clips_to_report = report_every;
      report_status(context, score, false);
    }
    if (interrupted()) return false;
    if (clip == data.n) continue;
    count_rearrangements(clip);
    if (may_clip(clip)) return true;
  }
  return false;
}

void swap_run::detach_clip() {
  tree_arrays& tree = data.tree;
  sister = at(tree.sister, clip);
  home_root = clip < data.n ? clip : at(tree.second, clip);
  home_first = clip < data.n ? clip : at(tree.first, clip);
  if (sister == 0) {
    // The whole ingroup: what is left is terminal 0 alone, with its own states.
    joint = -1;
    pass_ingroup_alone(*this);
    return;
  }
  begin_undo(data);
  joint = detach(tree, clip);
  repair_after_clip(data, sister, clip);
}

bool swap_run::begin_clip() {
  n_moves = 0;
  chosen = -1;
  restart = false;
  if (kind == swap_kind::tbr) make_cluster_lists(*this);
  if (trees_wanted && !enumeration && !marks_known && search_level(context) > 0) {
    mark_tree_in_work(context, marks);
    marks_known = true;
  }
  detach_clip();
  cost_home();
  best_here = home_cost;
  score_without = score - home_cost;
  best_branch = sister;
  best_root = home_root;
  set_bound();
  if (home_cost == 0 && !trees_wanted) {
    put_clip_back();
    return false;
  }
  return true;
}

bool swap_run::bound_slots_allow(joining level, int clip_side, int main_side, double* cost) const {
  if (slots.wide_cost) {
    *cost += slots.wide_cost(data, level, clip_side, main_side, bound - *cost);
    if (fits ? *cost >= bound : *cost > bound) return false;
  }
  return level != joining::nodes || !slots.forbids ||
         !slots.forbids(data, clip, clip_side, main_side);
}

/// Under implied weights the steps of joining are taken off the counters, so that all other places
/// are costed by what the two halves have.
void swap_run::cost_home() {
  const word* const own = clip_words(home_root);
  const word* const other = target_words(sister);
  if (!fits) {
    home_cost = data.kernels.cost_pair(own, other, data.layout, INT32_MAX / 2);
  } else if (joint < 0) {
    home_cost = data.kernels.fit.cost_pair(own, other, data.layout, no_bound);
  } else {
    home_cost = remove_home_steps(data, own, other);
  }
  if (slots.wide_cost) {
    home_cost += slots.wide_cost(data, joining::nodes, home_root, sister, no_bound);
  }
}

bool swap_run::take_candidate(int u, int v, double cost) {
  const bool better = best_here - cost > rounding;
  if (trees_wanted) {
    if (n_moves < static_cast<int>(move_list.size())) {
      if (better) chosen = n_moves;
      move_list[static_cast<std::size_t>(n_moves++)] = {score_without + cost, v};
    }
    if (enumeration) return false;
  }
  if (!better) return false;
  score = score_without + cost;
  best_here = cost;
  best_branch = v;
  best_root = u;
  set_bound();
  return cost == 0 && single_tree();
}

/// The sum of the costs of steps differs from the score by rounding, which would pile up.
void swap_run::make_scores_exact(int u) {
  for (int i = 0; i < n_moves; ++i) {
    swap_candidate& move = move_list[static_cast<std::size_t>(i)];
    const double wide =
        slots.wide_cost ? slots.wide_cost(data, joining::nodes, u, move.branch, no_bound) : 0.0;
    move.score = exact_score(data, clip_words(u), target_words(move.branch)) + wide;
  }
  if (chosen >= 0) score = move_list[static_cast<std::size_t>(chosen)].score;
}

void swap_run::store_trees(int u) {
  const bool better = chosen >= 0 && score < stored_score - rounding;
  if (better) {
    context.score_limit = std::min(context.score_limit, score + rules.suboptimal);
    purge_above(context, score + rules.suboptimal, first_slot);
  }
  set_slack();
  const int slot = context.swapping_index;
  const bool own_slot_is_worse =
      better && slot >= 0 &&
      (buffer_full || score + rules.suboptimal + rounding < record_of(context, slot).score);
  if (own_slot_is_worse) {
    restart = replace_in_buffer(*this, u);
    given_up = !restart;
  } else {
    given_up = store_moves(*this, u);
  }
  stored_score = std::min(stored_score, score);
  set_slack();
  set_bound();
}

bool swap_run::store_noted(int u) {
  if (n_moves == 0) return false;
  if (fits) make_scores_exact(u);
  if (enumeration) {
    const double limit = stored_score + rules.suboptimal + rounding;
    for (int i = 0; i < n_moves; ++i) {
      const swap_candidate& move = move_list[static_cast<std::size_t>(i)];
      if (move.score > limit) continue;
      enumeration->meet(enumeration->receiver,
                        {&data, clip, sister, move.branch, home_root, u, move.score, stored_score});
    }
  } else if (!single_tree()) {
    store_trees(u);
  }
  n_moves = 0;
  chosen = -1;
  return restart || given_up;
}

void pass_ingroup_alone(swap_run& run) {
  if (run.fits) reset_counters(run.data);
  subtree_pass(run.data, run.clip);
}

void swap_run::put_clip_back() {
  if (kind == swap_kind::tbr) restore_cluster_lists(*this);
  if (fits && joint >= 0) {
    add_attachment_steps(data, clip_words(home_root), target_words(sister));
  }
  if (joint < 0) {
    full_pass(data);
    unite_clusters(data, cut);
    return;
  }
  attach(data.tree, clip, joint, sister);
  if (undo_sets(data)) return;
  // Too much was noted.
  full_pass(data);
  unite_clusters(data, cut);
}

void swap_run::tell_wrong_score(double error) const {
  if (kind == swap_kind::spr) {
    emitf("\nOOpps --- spr, move %i -> %i, score is %s", clip, best_branch,
          score_text(data, score).c_str());
  } else {
    emitf("\nOOpps --- tbr, move %i(%i) -> %i, score is %s", clip, best_root, best_branch,
          score_text(data, score).c_str());
  }
  emitf(" error: %g", error);
}

void swap_run::apply_move() {
  if (kind == swap_kind::tbr) restore_cluster_lists(*this);
  const bool quick = !rules.swap.safe_unclip && !data.has_asymmetric && joint >= 0;
  const double expected = score_without + best_here;
  end_undo(data);
  if (quick) {
    if (fits) add_attachment_steps(data, clip_words(best_root), target_words(best_branch));
    if (best_root != home_root) reroot_subtree(data, best_root, clip);
    attach(data.tree, clip, joint, best_branch);
    repair_after_insert(data, clip);
    if (fits && !slots.wide_cost) score = total_fit(data);
  } else {
    if (best_root != home_root) reroot_links(data.tree, best_root, clip);
    if (joint >= 0) attach(data.tree, clip, joint, best_branch);
    score = full_pass(data);
  }
  if (!is_same_score(score, expected, kind_of_scores(data))) tell_wrong_score(score - expected);
  tree_changed();
  begin_undo(data);
  first_pass = false;
  ++context.moves_done;
}

void swap_run::finish_clip() {
  const bool moved = best_branch != sister || best_root != home_root;
  if (!moved) {
    put_clip_back();
    return;
  }
  apply_move();
  counter = multi == 0 ? 1 : 0;
  set_slack();
}

double swap_run::finish() {
  end_undo(data);
  data.in_swap = false;
  std::copy_n(data.tree.anc.begin(), data.nodes, anc.begin());
  const double true_score = tree_length(data, anc);
  if (!is_same_score(true_score, score, kind_of_scores(data)) && !interrupted()) {
    error_end_f("\nInternal error in %s calculations, expected %.10f, is %.10f",
                kind == swap_kind::spr ? "SPR" : "TBR", score, true_score);
  }
  return true_score;
}

}  // namespace zeb
