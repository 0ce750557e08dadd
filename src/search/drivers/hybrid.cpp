#include "search/drivers/hybrid.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/passes/passes.h"
#include "search/breaking_trees.h"
#include "search/moves/shared_clades.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"
#include "search/store/tree_identity.h"

namespace zeb {
namespace {

using tree_array = std::vector<std::int32_t>;

tree_array plain_tree(const search_context& context, int slot) {
  const std::span<const std::int32_t> stored = slot_tree(context, slot);
  tree_array tree(stored.begin(), stored.end());
  forget_collapsed(tree);
  return tree;
}

class hybridizer {
 public:
  hybridizer(search_context& context, const hybrid_settings& options, const hybrid_task& task)
      : context_(context),
        options_(options),
        task_(task),
        pool_(task.slots),
        input_(static_cast<int>(pool_.size())) {}
  hybrid_result run();

 private:
  struct candidate {
    tree_array tree;
    int parent = -1;  // the tree that it was made from: its place in the pool; -1: there is none
    double gain = 0;  // on that tree, before any swapping
  };
  void run_round();
  bool draw_pair(int* a, int* b);
  void cross(int a, int b);
  candidate most_promising(int a, int b);
  void keep(std::span<const std::int32_t> hybrid, double score, int parent);
  void make_room();
  bool has_room() const { return context_.trees.ntrees < limit(); }
  void keep_best(int count);
  void take_best(double score);
  double score_of(int place) { return record_of(context_, pool_[at(place)]).score; }
  int sample() const { return std::max(2, options_.sample > 0 ? options_.sample : input_); }
  int limit() const { return std::min(context_.tree_limit, context_.trees.maxtrees); }
  bool is_over() const {
    return interrupted() ||
           (task_.target_score > 0 && is_within_bound(result_.best, task_.target_score, kind()));
  }
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& context_;
  const hybrid_settings& options_;
  const hybrid_task& task_;
  hybrid_result result_;
  std::vector<int> pool_;  // slots
  const int input_;        // trees that the pool had at the start
};

void hybridizer::take_best(double score) {
  if (score >= breaking_handicap || !is_better_score(score, result_.best, kind())) return;
  result_.best = score;
  if (context_.best_score < 0 || is_better_score(score, context_.best_score, kind()))
    context_.best_score = score;
  note_score(context_, score);
}

/// The best trees of the pool stay, those that came first where they are as good.
void hybridizer::keep_best(int count) {
  if (static_cast<int>(pool_.size()) <= count) return;
  std::stable_sort(pool_.begin(), pool_.end(), [this](int a, int b) {
    return record_of(context_, a).score < record_of(context_, b).score;
  });
  std::vector<std::uint8_t> stays(at(context_.trees.ntrees), 1);
  for (std::size_t i = at(count); i < pool_.size(); ++i) stays[at(pool_[i])] = 0;
  pool_.resize(at(count));
  std::vector<int> new_slot(stays.size(), 0);
  for (std::size_t t = 1; t < stays.size(); ++t) new_slot[t] = new_slot[t - 1] + stays[t - 1];
  for (int& slot : pool_) slot = new_slot[at(slot)];
  keep_trees(context_, stays);
}

/// Room for a hybrid: the worst trees of the pool go, if need be.
void hybridizer::make_room() {
  constexpr int fewest = 2;
  if (has_room()) return;
  result_.buffer_full = true;
  keep_best(std::clamp(static_cast<int>(pool_.size()) - 1, fewest, std::max(fewest, sample())));
}

bool hybridizer::draw_pair(int* a, int* b) {
  const int count = static_cast<int>(pool_.size());
  constexpr int tries = 5;
  for (int i = 0; i < tries; ++i) {
    *a = context_.random.draw() % count;
    *b = context_.random.draw() % (count - 1);
    *b += *b >= *a;
    if (plain_tree(context_, pool_[at(*a)]) != plain_tree(context_, pool_[at(*b)])) return true;
  }
  return false;
}

/// A hybrid better than the tree that it was made from takes its place; of the others those as good
/// as the best come to the pool.
void hybridizer::keep(std::span<const std::int32_t> hybrid, double score, int parent) {
  const bool is_better = is_better_score(score, score_of(parent), kind());
  const bool is_best = is_within_bound(score, result_.best, kind());
  if (is_better && options_.replace) {
    replace_tree(context_, hybrid, pool_[at(parent)], score);
    return;
  }
  if (!is_better && !is_best) return;
  if (!has_room()) return;
  const int slot = context_.trees.ntrees;
  if (store_tree(context_, hybrid, slot, score)) pool_.push_back(slot);
}

/// Of the hybrids of some pieces the one that gains most on the tree that it was made from, or
/// loses least. Making a hybrid costs a few passes, swapping it some hundred: on 500 and 1,600 taxa
/// the choice among twenty halved the time to the same score.
hybridizer::candidate hybridizer::most_promising(int a, int b) {
  constexpr int pieces_tried = 10;
  constexpr int draws = 20;
  const tree_array one = plain_tree(context_, pool_[at(a)]);
  const tree_array other = plain_tree(context_, pool_[at(b)]);
  candidate best;
  crossing made;
  for (int i = 0; i < pieces_tried && !interrupted(); ++i) {
    if (!cross_trees(context_, one, other, draws, &made)) break;
    for (const int side : {0, 1}) {
      const int parent = side == 0 ? a : b;
      const double gain = score_of(parent) - made.scores[at(side)];
      if (best.parent >= 0 && gain <= best.gain) continue;
      tree_array& hybrid = made.hybrids[at(side)];
      if (tree_is_new(context_, hybrid, context_.trees.ntrees, made.scores[at(side)]))
        best = {std::move(hybrid), parent, gain};
    }
  }
  return best;
}

void hybridizer::cross(int a, int b) {
  if (!has_room()) return;
  candidate hybrid = most_promising(a, b);
  if (hybrid.parent < 0 || interrupted()) return;
  const double score = tbr_swap(context_, hybrid.tree, {});
  const auto& constraints = context_.constraints_in_force;
  if (constraints && !constraints->obeyed(context_.data)) return;
  take_best(score);
  keep(hybrid.tree, score, hybrid.parent);
  report_status(context_, score, false);
}

void hybridizer::run_round() {
  for (int i = 0; i < options_.pairings && !is_over(); ++i) {
    int a = 0;
    int b = 0;
    context_.shown.current_tree = i;
    report_status_best(context_);
    make_room();
    if (!draw_pair(&a, &b)) continue;
    cross(a, b);
    if (options_.clog > 0 && pool_.size() > at(options_.clog + 1) * at(input_)) keep_best(sample());
  }
}

hybrid_result hybridizer::run() {
  for (int i = 0; i < input_; ++i) take_best(score_of(i));
  if (task_.reseeds) seed_generator(context_.random);
  context_.shown.stage = stage_hybrid;
  int rounds_without_gain = 0;
  while (result_.rounds < options_.rounds && !is_over() && pool_.size() > 1) {
    if (task_.shows_rounds) context_.shown.replication = result_.rounds + 1;
    const double before = result_.best;
    run_round();
    if (interrupted()) break;
    ++result_.rounds;
    const bool gained = is_better_score(result_.best, before, kind());
    rounds_without_gain = gained ? 0 : rounds_without_gain + 1;
    if (options_.autostop > 0 && rounds_without_gain >= options_.autostop) break;
    if (result_.rounds < options_.rounds) keep_best(sample());
  }
  return result_;
}

}  // namespace

hybrid_result hybridize_trees(search_context& context, const hybrid_settings& options,
                              const hybrid_task& task) {
  return hybridizer(context, options, task).run();
}

bool cross_trees(search_context& context, std::span<const std::int32_t> a,
                 std::span<const std::int32_t> b, int draws, crossing* made) {
  const int n = context.data.n;
  constexpr int fewest_taxa = 6;
  for (int i = 0; i < draws && n >= fewest_taxa; ++i) {
    const int node = n + 1 + context.random.draw() % (n - 2);
    made->piece = piece_shared_at(a, node, b, n);
    if (!can_be_exchanged(made->piece, n)) continue;
    for (tree_array& hybrid : made->hybrids) hybrid.resize(at(context.data.nodes));
    made->scores[0] = take_piece_over(context, a, b, made->piece, made->hybrids[0]);
    made->scores[1] = take_piece_over(context, b, a, made->piece, made->hybrids[1]);
    return true;
  }
  return false;
}

double exchange_score(const search_context& context, const std::vector<int>& slots, int minfork) {
  const int n = context.data.n;
  constexpr std::int64_t most_pairs = 1000;
  const std::int64_t count = static_cast<std::int64_t>(slots.size());
  const std::int64_t step = std::max<std::int64_t>(1, count * (count - 1) / 2 / most_pairs);
  std::int64_t pair = 0;
  std::int64_t compared = 0;
  std::int64_t exchangeable = 0;
  for (std::size_t i = 0; i < slots.size() && n > 3; ++i) {
    const tree_array tree = plain_tree(context, slots[i]);
    for (std::size_t j = i + 1; j < slots.size(); ++j) {
      if (pair++ % step != 0) continue;
      ++compared;
      const auto shared = shared_clades(tree, plain_tree(context, slots[j]), n);
      exchangeable += std::ranges::count_if(
          shared, [minfork](const shared_clade& clade) { return clade.forks >= minfork; });
    }
  }
  if (compared == 0) return 0;
  return 100.0 * static_cast<double>(exchangeable) / static_cast<double>(compared * (n - 3));
}

}  // namespace zeb
