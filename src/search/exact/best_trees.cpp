#include "search/exact/best_trees.h"

#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {

best_trees::best_trees(search_context& context, bool sample)
    : context_(context),
      data_(context.data),
      sample_(sample),
      rounding_(tolerance_of(kind_of_scores(data_))) {}

double best_trees::limit() const {
  if (!is_full_) return best_ + context_.rules.suboptimal + 2 * rounding_;
  if (!has_best_) return best_ + 2 * rounding_;
  return kind_of_scores(data_) == score_kind::whole ? best_ - 1 : best_ - 2 * rounding_;
}

void best_trees::take_best(double score) {
  const double suboptimal = context_.rules.suboptimal;
  // What a full buffer refused was no better than the best tree before.
  if (!is_within_bound(best_, score + suboptimal, kind_of_scores(data_))) overflowed_ = false;
  best_ = score;
  is_full_ = false;
  has_best_ = false;
  seen_ = 0;
  context_.best_score = score;
  note_score(context_, score);
  purge_above(context_, score + suboptimal, 0);
}

void best_trees::keep(double score, std::span<const std::uint8_t> marks) {
  const score_kind kind = kind_of_scores(data_);
  if (is_better_score(score, best_, kind)) take_best(score);
  if (!is_within_bound(score, best_ + context_.rules.suboptimal, kind)) return;
  tree_slots& trees = context_.trees;
  ++seen_;
  const bool is_first_best = !has_best_ && is_within_bound(score, best_, kind);
  if (is_first_best) has_best_ = true;
  if (trees.ntrees < trees.maxtrees) {
    if (store_marked(context_, data_.tree.anc, trees.ntrees, score, marks)) ++context_.moves_done;
  } else if (sample_) {
    take_sample(score, marks);
  } else if (!is_stored(context_, data_.tree.anc, score, marks)) {
    // Suboptimal trees may fill the buffer before the best one is found.
    if (is_first_best) replace_stored(context_, data_.tree.anc, worst_slot(), score, marks);
    overflowed_ = true;
    is_full_ = true;
  }
}

int best_trees::worst_slot() const {
  int worst = 0;
  for (int slot = 1; slot < context_.trees.ntrees; ++slot)
    if (record_of(context_, slot).score > record_of(context_, worst).score) worst = slot;
  return worst;
}

/// Reservoir sampling (Vitter 1985): of the trees seen so far each is in the buffer with the same
/// chance.
void best_trees::take_sample(double score, std::span<const std::uint8_t> marks) {
  random_generator& random = context_.random;
  const auto draw =
      static_cast<std::uint64_t>(random.draw()) << 31 | static_cast<std::uint64_t>(random.draw());
  const auto place = static_cast<std::int64_t>(draw % static_cast<std::uint64_t>(seen_));
  if (place >= context_.trees.maxtrees) return;
  replace_stored(context_, data_.tree.anc, static_cast<int>(place), score, marks);
}

}  // namespace zeb
