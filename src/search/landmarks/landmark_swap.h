// What a swap does otherwise where there are landmarks: reconnections within the bound by all other
// characters are collected for each clip, estimated together, and the more promising ones checked,
// best first, within the error margin.
//
// Estimates of joinings are too high by a sixth or so, since nodes that would give way are held.
// That is much the same for all places of a clip, so they are taken in relation to the estimate of
// its home, whose true cost is known: what is left of the error is some 6 %.
#pragma once

#include <vector>

#include "landmarks/search_settings.h"
#include "search/landmarks/landmark_moves.h"
#include "search/moves/candidate_judge.h"

namespace zeb {

class landmark_swap final : public candidate_judge {
 public:
  /// The tree in work is that of the run.
  explicit landmark_swap(swap_run& run);
  ~landmark_swap() override { landmarks_.note_moves(outer_); }
  landmark_swap(const landmark_swap&) = delete;
  landmark_swap& operator=(const landmark_swap&) = delete;

  double begin_clip() override;
  void collect(int u, int v, double cost) override { candidates_.push_back({u, v, cost, 0}); }
  void judge() override;
  void tree_changed() override;
  double score() const override { return score_; }
  /// A stratified swap goes on with a margin.
  bool begins_anew() override;

 private:
  /// Estimates of two kinds in relation to the truth, by what they say of the clip's home.
  struct home_ratios {
    double quick = 1;
    double refined = 1;
  };
  struct candidate {
    int u;
    int v;
    double others;     // cost in all other characters
    double landmarks;  // estimate; once it is checked, the cost
  };
  double margin() const;
  bool refines() const;
  home_ratios measure_home();
  void estimate_all(double allowed);
  /// Is it within the bound if it costs less by a proportion?
  bool is_near(const candidate& one, double cost, double allowed) const;
  /// ... even if it costs more than estimated, by the margin?
  bool is_surely_within(const candidate& one) const;
  bool is_refused(const candidate& one, double allowed) const;
  /// Makes the cost exact; false where it is over the bound.
  bool check(candidate& one);
  void hand_over(std::vector<candidate>& judged);

  swap_run& run_;
  searched_landmarks& landmarks_;
  landmark_moves moves_;
  std::vector<candidate> candidates_;
  const landmark_moves* outer_;  // of a swap in whose midst this one runs
  home_ratios home_;
  double score_ = 0;
  bool stratified_;
};

}  // namespace zeb
