#include "realign/tree_alignment.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "console/progress.h"
#include "landmarks/landmark_tree.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "realign/point_weights.h"
#include "realign/random_moves.h"
#include "realign/superimpose.h"
#include "realign/tree_fit.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// What the levels of thoroughness mean.
struct thoroughness {
  int passes;        // over the terminals, one by one, in an improvement
  int resolution;    // of the turns that are tried for each
  double hardening;  // of the springs, from one softness to the next
};
constexpr std::array<thoroughness, 5> levels = {
    {{1, 1, 0.5}, {1, 2, 0.6}, {2, 4, 0.7}, {3, 5, 0.75}, {5, 7, 0.8}}};

similarity even_turn(int number, int count) {
  const double angle = 2 * std::numbers::pi * number / count;
  similarity turned;
  turned.turn = turn_in_plane(std::cos(angle), std::sin(angle));
  return turned;
}

bool is_complete(std::span<const landmark_point> points) {
  return !points.empty() &&
         std::ranges::none_of(points, [](const landmark_point& p) { return is_missing(p); });
}

std::vector<int> terminals_of(const_tree_span tree) {
  std::vector<int> terminals;
  for (int t = 0; t < matrix.ntax; ++t)
    if (!is_absent(tree, t)) terminals.push_back(t);
  return terminals;
}

class tree_aligner {
 public:
  tree_aligner(const tree_alignment& how, int character)
      : how_(how),
        character_(character),
        dimensions_(configuration_of(character)->dimensions),
        original_(at(matrix.ntax)) {
    const const_tree_span tree = stored_tree(how.tree);
    for (const int t : terminals_of(tree)) {
      const auto points = landmarks_of(character, t);
      if (!is_complete(points)) continue;
      original_[at(t)].assign(points.begin(), points.end());
      if (still_ < 0 || t == how.reference) still_ = t;
      ++taxa_;
    }
  }

  tree_alignment_outcome align() {
    if (taxa_ < 2) return {taxa_, 0, 0};
    tree_fit fit(landmark_tree_of(stored_tree(how_.tree), matrix.ntax), dimensions_,
                 weights_of_points(character_), original_, still_);
    fit_ = &fit;
    best_ = original_;
    tree_alignment_outcome outcome = {taxa_, fit.score(), 0};
    least_ = outcome.before;
    exact_ = fit.extent() * 1e-12 * taxa_;
    improve_from(original_);
    improve_from(on_reference());
    for (int cycle = 0; cycle < how_.cycles && least_ > exact_; ++cycle) {
      show_progress("Aligning", cycle, how_.cycles);
      improve_from(perturbed());
    }
    clear_progress();
    outcome.after = least_;
    take_best(outcome.before);
    return outcome;
  }

 private:
  const thoroughness& level() const { return levels[at(how_.level)]; }

  /// Each shape laid on the reference.
  terminal_shapes on_reference() const {
    terminal_shapes shapes = original_;
    for (const int t : fit_->movable())
      move_points(shapes[at(t)], superimpose({dimensions_, shapes[at(still_)], shapes[at(t)],
                                              weights_of_points(character_)},
                                             {}));
    return shapes;
  }

  bool keep_if_better() {
    const double score = fit_->score();
    if (score >= least_) return false;
    least_ = score;
    best_ = fit_->shapes();
    return true;
  }

  void improve_from(terminal_shapes shapes) {
    if (least_ <= exact_) return;
    fit_->set_shapes(std::move(shapes));
    keep_if_better();
    constexpr double softest = 0.5;
    constexpr double hardest = 1e-7;
    fit_->relax(softest, hardest, level().hardening, generator_);
    double score = fit_->score();
    if (score < least_) keep_if_better();
    for (int pass = 0; pass < level().passes; ++pass) {
      if (!one_by_one(score)) break;
    }
    fit_->relax(0.01, hardest, level().hardening, generator_);
    keep_if_better();
  }

  /// Every terminal in turn is fitted anew to the rest of the tree; what is worse is taken back.
  bool one_by_one(double& score) {
    bool any = false;
    std::vector<int> order(fit_->movable().size());
    random_sequence(generator_, static_cast<int>(order.size()), order, -1, {});
    for (const int i : order) {
      check_interrupt();
      const terminal_shapes former = fit_->shapes();
      fit_->refit(fit_->movable()[at(i)], turns());
      const double changed = fit_->score();
      if (changed < score * (1 - 1e-9)) {
        score = changed;
        any = true;
        if (score < least_) keep_if_better();
      } else {
        fit_->set_shapes(former);
      }
    }
    return any;
  }

  /// The turns that are tried for a terminal: evenly spaced in the plane, at random in space.
  std::vector<similarity> turns() {
    constexpr int in_plane = 8;
    constexpr int in_space = 20;
    const int count = level().resolution * (dimensions_ == 2 ? in_plane : in_space);
    std::vector<similarity> found(1);
    for (int i = 1; i < count; ++i)
      found.push_back(dimensions_ == 2 ? even_turn(i, count) : random_turn(3, generator_));
    return found;
  }

  /// A clade, or some of the terminals each on its own, turned by any angle.
  terminal_shapes perturbed() {
    terminal_shapes shapes = best_;
    const auto draw_below = [&](int n) { return generator_.draw() % n; };
    if (draw_below(2) == 0) {
      turn_clade(shapes, draw_below(fit_->tree().nodes()));
      return shapes;
    }
    for (const int t : fit_->movable()) {
      if (draw_below(3) != 0) continue;
      turn_about_middle(shapes, {t});
    }
    return shapes;
  }
  void turn_clade(terminal_shapes& shapes, int node) {
    std::vector<int> members;
    for (const int t : fit_->movable()) {
      int v = t;
      while (v >= 0 && v != node) v = fit_->tree().ancestor[at(v)];
      if (v == node) members.push_back(t);
    }
    turn_about_middle(shapes, members);
  }
  void turn_about_middle(terminal_shapes& shapes, const std::vector<int>& members) {
    landmark_point sum;
    double count = 0;
    for (const int t : members)
      for (const landmark_point& p : shapes[at(t)]) {
        sum = {sum.x + p.x, sum.y + p.y, sum.z + p.z};
        ++count;
      }
    if (count == 0) return;
    const landmark_point middle = {sum.x / count, sum.y / count, sum.z / count};
    const similarity motion = motion_about(random_turn(dimensions_, generator_), middle, middle);
    for (const int t : members) move_points(shapes[at(t)], motion);
  }

  // Many small motions add up rounding: the shapes are taken from the matrix again, and moved at
  // once to where they came.
  void take_best(double before) const {
    if (least_ >= before) return;
    for (const int t : fit_->movable()) {
      const similarity motion =
          least_squares_motion({dimensions_, best_[at(t)], original_[at(t)], {}}, {});
      move_points(changeable_landmarks_of(character_, t), motion);
    }
  }

  const tree_alignment& how_;
  int character_;
  int dimensions_;
  terminal_shapes original_;
  int still_ = -1;
  int taxa_ = 0;
  tree_fit* fit_ = nullptr;
  terminal_shapes best_;
  double least_ = 0;
  double exact_ = 0;
  random_generator generator_{static_cast<unsigned>(draw())};
};

}  // namespace

void check_tree_alignment(const tree_alignment& how, const std::vector<int>& characters) {
  const const_tree_span tree = stored_tree(how.tree);
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  for (const int count : lists.count)
    if (count != 0 && count != 2) error_end("Reference tree for tree-alignment must be binary!");
  for (int t = 0; t < matrix.ntax; ++t)
    if (is_absent(tree, t) == (matrix.taxon_active[at(t)] != 0))
      error_end("For tree alignment, taxa in tree must match active taxa");
  const std::vector<int> terminals = terminals_of(tree);
  for (const int c : characters) {
    const bool lacking =
        std::ranges::any_of(terminals, [c](int t) { return lacks_configuration(c, t); });
    // The room for a copy of the tree without these taxa.
    if (lacking && store.ntrees >= store.maxtrees)
      error_end("To align configurations with some missing taxa,\nyou need to increase max. trees");
  }
}

bool has_incomplete_terminals(const tree_alignment& how, int character) {
  const std::vector<int> terminals = terminals_of(stored_tree(how.tree));
  return std::ranges::any_of(terminals, [character](int t) {
    return !lacks_configuration(character, t) && !is_complete(landmarks_of(character, t));
  });
}

tree_alignment_outcome align_on_tree(const tree_alignment& how, int character) {
  return tree_aligner(how, character).align();
}

}  // namespace zeb
