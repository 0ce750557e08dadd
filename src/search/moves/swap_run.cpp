#include "search/moves/swap_run.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/random.h"
#include "engine/fit/implied_weighting.h"
#include "engine/passes/passes.h"
#include "engine/passes/undo.h"
#include "engine/wide/wide_costs.h"
#include "search/hooks.h"
#include "search/moves/clip_order.h"

namespace zeb {

namespace {

constexpr int moves_between_cuts = 8;

template <class T>
std::span<T> per_node(const search_data& data, std::size_t times = 1) {
  return calloc_low<T>(at(data.nodes) * times);
}

}  // namespace

swap_run::swap_run(search_context& search, swap_kind kind_of_swap, std::span<std::int32_t> tree,
                   const swap_task& task)
    : context(search),
      data(search.data),
      at_end(data),
      rules(search.rules),
      kind(kind_of_swap),
      anc(tree),
      first_slot(task.first_slot),
      multi(std::max(task.multi, 0)),
      first_pass(task.multi < 0),
      trees_wanted(task.multi > 0 || task.enumeration),
      stays(task.stay && task.multi > 0),
      enumeration(task.enumeration),
      perturbing(task.perturbing),
      share(task.share),
      fits(data.implied_on),
      rounding(tolerance_of(kind_of_scores(data))),
      slots(search.slots),
      constraints_in_force(search.constraints_in_force.get()),
      more_to_ask(data.has_wide || slots.forbids || constraints_in_force) {
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
  const bool random_order = rules.swap.random_clip || perturbing;
  if (random_order || promising_first || !task.clips_first.empty())
    clip_order = per_node<std::int32_t>(data);

  score = tree_length(data, anc);
  if (fits) choose_cost_units(data);
  stored_score = score;
  data.in_swap = true;
  if (random_order) {
    random_sequence(context.random, data.nodes, clip_order, 0, {});
  } else if (promising_first) {
    promising_clips_first(data, clip_order);
  } else if (!task.clips_first.empty()) {
    given_clips_first(task.clips_first, clip_order);
  }
  report_every = rules.clips_between_reports;
  if (report_every == 0) report_every = data.n < 50 ? 2 : 10;
  clips_to_report = report_every;
  if (constraints_in_force) constraints_in_force->begin_swap(data);
  tree_changed();
  begin_undo(data);
  set_slack();
  if (data.whole) judge = hooks_of_search.judge_of_swap(*this);
}

end_of_swap::~end_of_swap() {
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

/// Sums of fractions that are the same differ by rounding.
double swap_run::least_slack() const { return 2 * rounding; }

/// Less than a step may be gained where scores are fractions.
double swap_run::slack_of_better() const { return rounding > 0 ? -rounding : -1.0; }

void swap_run::set_slack() {
  buffer_full = multi > 0 && context.trees.ntrees >= multi;
  const bool more_wanted = enumeration || (multi > 0 && !buffer_full);
  if (perturbing) {
    swap_slack = perturbing->slack() + rounding;
  } else if (!more_wanted) {
    swap_slack = slack_of_better();
  } else if (rules.suboptimal > 0) {
    context.score_limit = std::min(context.score_limit, score + rules.suboptimal);
    swap_slack = std::max(context.score_limit - score, 0.0);
    if (enumeration) swap_slack = rules.suboptimal;
    swap_slack += least_slack();
  } else {
    swap_slack = least_slack();
  }
}

void swap_run::set_bound() {
  bound = best_here + std::min(swap_slack, 1e9);
  step_bound = static_cast<std::int32_t>(std::floor(std::min(bound, 1e9)));
}

bool swap_run::all_others_allow(join_side from, join_side to, double* cost) const {
  if (data.has_wide) {
    *cost += wide_join_cost(data, from, to, bound - *cost);
    if (fits ? *cost >= bound : *cost > bound) return false;
  }
  const bool is_move = from.end != join_end::cluster && to.end != join_end::cluster;
  if (!is_move) return true;
  if (constraints_in_force && constraints_in_force->forbids(data, from.number, to.number))
    return false;
  return !slots.forbids || !slots.forbids(data, clip, from.number, to.number);
}

bool swap_run::take_candidate(int u, int v, double cost) {
  if (!judge) return take_judged(u, v, cost);
  judge->collect(u, v, cost);
  return false;
}

bool swap_run::take_judged(int u, int v, double cost) {
  const bool better = best_here - cost > rounding;
  if (trees_wanted) {
    if (n_moves < static_cast<int>(move_list.size())) {
      if (better && !stays && !enumeration) chosen = n_moves;
      move_list[static_cast<std::size_t>(n_moves++)] = {score_without + cost, v};
    }
    if (enumeration || stays) return false;
  }
  if (!better) return perturbing && perturbs(u, v, cost);
  if (perturbing) swap_slack = slack_of_better();
  go_to(u, v, cost);
  return cost == 0 && single_tree();
}

void swap_run::go_to(int u, int v, double cost) {
  score = score_without + cost;
  best_here = cost;
  best_branch = v;
  best_root = u;
  set_bound();
}

bool swap_run::perturbs(int u, int v, double cost) {
  perturbing->met_other = true;
  if (has_moved()) return false;
  const double worse = cost - home_cost;
  if (worse > rounding) {
    const clip_place home{clip_side(home_root), target_side(sister)};
    const clip_place other{clip_side(u), target_side(v)};
    if (!perturbing->accept_worse || !accepts_worse(*perturbing, context.random, data, worse,
                                                    score_without + cost, home, other)) {
      return false;
    }
  }
  go_to(u, v, cost);
  return true;
}

void pass_ingroup_alone(swap_run& run) {
  if (run.fits) reset_counters(run.data);
  subtree_pass(run.data, run.clip);
}

bool swap_run::agree(double a, double b) const {
  constexpr double rounding_of_sums = 1e-12;  // in relation to the score: weights may be millions
  return std::abs(a - b) <= rounding * (1 + rounding_of_sums / score_tolerance * std::abs(a));
}

double swap_run::finish() {
  end_undo(data);
  data.in_swap = false;
  std::copy_n(data.tree.anc.begin(), data.nodes, anc.begin());
  const double true_score = tree_length(data, anc);
  if (!agree(true_score, score) && !interrupted()) {
    error_end_f("\nInternal error in %s calculations, expected %.10f, is %.10f",
                kind == swap_kind::spr ? "SPR" : "TBR", score, true_score);
  }
  return true_score;
}

}  // namespace zeb
