#include "search/landmarks/landmark_swap.h"

#include <algorithm>

#include "base/indices.h"
#include "base/interrupts.h"
#include "landmarks/landmark_workers.h"
#include "search/moves/move_store.h"
#include "search/moves/swap_run.h"
#include "search/search_report.h"

namespace zeb {
namespace {

constexpr int candidates_together = 4;  // that a thread takes at a time
/// What is left of the margin once nodes near the union have moved.
constexpr double margin_when_refined = 1.0 / 3;
constexpr double least_cost = 1e-6;  // of a joining, in relation to the score, that tells of errors

}  // namespace

landmark_swap::landmark_swap(swap_run& run)
    : run_(run),
      landmarks_(*landmarks_in(run.data)),
      moves_(run.data),
      outer_(landmarks_.moves_in_work()),
      score_(landmarks_.score_of(run.data, run.data.tree.anc)),
      stratified_(run.rules.swap.stratified) {
  moves_.place_tree(true);
  landmarks_.note_moves(&moves_);
}

bool landmark_swap::begins_anew() {
  const bool anew = stratified_;
  stratified_ = false;
  return anew;
}

/// In the first of two rounds of a stratified swap there is none.
double landmark_swap::margin() const {
  if (stratified_) return 0;
  const error_margin& wanted = landmark_searching.margin;
  const double margin = wanted.at_percent(100.0 * run_.counter / run_.data.nodes);
  if (wanted.by_errors == error_margin::observed::ignored) return margin;
  const estimate_errors& errors = run_.context.landmark_errors;
  const double seen = errors.mean() + wanted.deviations * errors.deviation();
  return wanted.by_errors == error_margin::observed::smaller ? std::min(margin, seen)
                                                             : std::max(margin, seen);
}

double landmark_swap::begin_clip() {
  candidates_.clear();
  moves_.begin_clip({run_.clip, run_.joint, run_.home_root, run_.home_first});
  return score_ - moves_.cost_of_halves();
}

bool landmark_swap::refines() const {
  return landmark_searching.refine_depth > 0 && landmark_searching.refine_rounds > 0;
}

landmark_swap::home_ratios landmark_swap::measure_home() {
  const double cost = score_ - moves_.cost_of_halves();
  if (cost <= least_cost * score_) return {};
  const int u = run_.home_root;
  const int v = run_.sister;
  const landmark_search_settings& wanted = landmark_searching;
  home_ratios ratios;
  ratios.quick = std::max(1.0, moves_.estimate(u, v, no_bound) / cost);
  if (refines())
    ratios.refined =
        std::max(1.0, moves_.refined(u, v, wanted.refine_depth, wanted.refine_rounds) / cost);
  return ratios;
}

bool landmark_swap::is_near(const candidate& one, double cost, double allowed) const {
  return one.others + cost / (1 + allowed) <= run_.bound + run_.rounding;
}

void landmark_swap::estimate_all(double allowed) {
  const int parts =
      (static_cast<int>(candidates_.size()) + candidates_together - 1) / candidates_together;
  share_out(parts, [&](int part) {
    const std::size_t end = std::min(candidates_.size(), at((part + 1) * candidates_together));
    for (std::size_t i = at(part * candidates_together); i < end; ++i) {
      candidate& one = candidates_[i];
      const double limit = (run_.bound + run_.rounding - one.others) * (1 + allowed) * home_.quick;
      one.landmarks = moves_.estimate(one.u, one.v, limit) / home_.quick;
    }
  });
}

bool landmark_swap::is_surely_within(const candidate& one) const {
  return one.others + one.landmarks * (1 + margin()) <= run_.bound + run_.rounding;
}

/// A perturbing swap takes worse trees only where few characters speak against them: that is seen
/// at once.
bool landmark_swap::is_refused(const candidate& one, double allowed) const {
  if (!run_.perturbing) return false;
  const bool is_worse = one.others + one.landmarks / (1 + allowed) > run_.home_cost + run_.rounding;
  if (!is_worse) return false;
  const clip_place home{run_.clip_side(run_.home_root), run_.target_side(run_.sister)};
  const clip_place other{run_.clip_side(one.u), run_.target_side(one.v)};
  return !may_accept_worse(*run_.perturbing, run_.data, home, other);
}

bool landmark_swap::check(candidate& one) {
  const landmark_search_settings& wanted = landmark_searching;
  if (refines() && !is_surely_within(one)) {
    const double refined =
        moves_.refined(one.u, one.v, wanted.refine_depth, wanted.refine_rounds) / home_.refined;
    if (!is_near(one, refined, margin() * margin_when_refined)) return false;
  }
  const double estimate = one.landmarks;
  const std::vector<std::int32_t> tree = moves_.joined_ancestors(one.u, one.v);
  one.landmarks = landmarks_.score_of(run_.data, tree) - moves_.cost_of_halves();
  if (one.landmarks > least_cost * score_)
    run_.context.landmark_errors.add((estimate - one.landmarks) / one.landmarks);
  return one.others + one.landmarks <= run_.bound + run_.rounding;
}

void landmark_swap::judge() {
  if (candidates_.empty()) return;
  const double allowed = margin();
  home_ = measure_home();
  estimate_all(allowed);
  std::erase_if(candidates_,
                [&](const candidate& one) { return !is_near(one, one.landmarks, allowed); });
  std::ranges::stable_sort(candidates_, {},
                           [](const candidate& one) { return one.others + one.landmarks; });
  std::vector<candidate> judged;
  for (candidate& one : candidates_) {
    poll_search(run_.context);  // a clip may have thousands of them, each of which is optimised
    if (interrupted()) break;
    if (!is_near(one, one.landmarks, allowed) || is_refused(one, allowed) || !check(one)) continue;
    if (run_.trees_wanted) {
      judged.push_back(one);
    } else if (run_.take_judged(one.u, one.v, one.others + one.landmarks)) {
      break;
    }
  }
  hand_over(judged);
  candidates_.clear();
}

/// Trees are stored by the rooting of the clip.
void landmark_swap::hand_over(std::vector<candidate>& judged) {
  std::ranges::stable_sort(judged, {}, &candidate::u);
  for (std::size_t i = 0; i < judged.size();) {
    const int u = judged[i].u;
    for (; i < judged.size() && judged[i].u == u; ++i) {
      const double cost = judged[i].others + judged[i].landmarks;
      if (cost <= run_.bound + run_.rounding && run_.take_judged(u, judged[i].v, cost)) return;
    }
    if (store_noted(run_, u)) return;
  }
}

void landmark_swap::tree_changed() {
  score_ = landmarks_.score_of(run_.data, run_.data.tree.anc);
  moves_.place_tree(false);
}

}  // namespace zeb
