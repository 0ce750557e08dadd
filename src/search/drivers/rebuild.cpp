#include "search/drivers/rebuild.h"

#include <algorithm>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "console/settings.h"
#include "engine/passes/passes.h"
#include "search/drivers/seed_sequence.h"
#include "search/moves/swapper.h"
#include "search/moves/tree_in_pieces.h"
#include "search/moves/walked_tree.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"
#include "search/store/tree_identity.h"

namespace zeb {

rebuild_settings rebuilding;

namespace {

class rebuilder {
 public:
  rebuilder(search_context& context, std::span<std::int32_t> tree, const rebuild_settings& options,
            const rebuild_task& task)
      : context_(context),
        options_(options),
        task_(task),
        tree_(tree),
        seeds_(context.random, context.rules.seed_step) {}
  rebuild_result run();

 private:
  void run_cycles();
  double cycle();
  void cut_clades(tree_in_pieces& forest);
  int node_to_cut(const std::vector<std::int32_t>& candidates);
  void put_in_order(std::vector<tree_piece>& pieces);
  int clades_to_cut();
  void end_cycle(double score);
  void reset_if_due(double score);
  void store(double score);
  void hybridize();
  void dump_sample();
  void take_best(double score);

  bool has_slots() const { return task_.first_slot >= 0; }
  bool hybridizes() const { return has_slots() && options_.hybrid > 0; }
  int limit() const { return std::min(context_.tree_limit, context_.trees.maxtrees); }
  bool is_over() const {
    return interrupted() ||
           (options_.findscore > 0 && is_within_bound(result_.best, options_.findscore, kind()));
  }
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& context_;
  const rebuild_settings& options_;
  const rebuild_task& task_;
  rebuild_result result_;
  std::span<std::int32_t> tree_;
  std::vector<std::int32_t> best_tree_;
  seed_sequence seeds_;
  int cycles_without_match_ = 0;
};

void rebuilder::take_best(double score) {
  if (!is_better_score(score, result_.best, kind())) return;
  result_.best = score;
  result_.hits = 0;
  best_tree_.assign(tree_.begin(), tree_.end());
  if (context_.best_score < 0 || is_better_score(score, context_.best_score, kind()))
    context_.best_score = score;
  note_score(context_, score);
}

int rebuilder::clades_to_cut() {
  const int n = context_.data.n;
  if (options_.clip_most <= 0) return std::max(1, options_.pclip * n / 100);
  const int range = options_.clip_most - options_.clip_least + 1;
  return options_.clip_least + (range > 1 ? context_.random.draw() % range : 0);
}

/// Clades within clades: of an internal node its own clade or that of a descendant is taken.
int rebuilder::node_to_cut(const std::vector<std::int32_t>& candidates) {
  const int node = candidates[at(context_.random.draw() % static_cast<int>(candidates.size()))];
  const tree_arrays& links = context_.data.tree;
  if (node < context_.data.n) return node;
  switch (context_.random.draw() % 3) {
    case 0:
      return links.first[at(node)];
    case 1:
      return links.second[at(node)];
    default:
      return node;
  }
}

void rebuilder::cut_clades(tree_in_pieces& forest) {
  const search_data& data = context_.data;
  const int largest =
      options_.size > 0 ? options_.size : std::max(1, options_.psize * data.n / 100);
  const walked_tree walk(tree_, data.n);
  std::vector<int> sizes(tree_.size(), 1);
  std::vector<std::int32_t> candidates;
  for (auto i = walk.preorder.rbegin(); i != walk.preorder.rend(); ++i) {
    if (*i >= data.n)
      sizes[at(*i)] = sizes[at(walk.first[at(*i)])] + sizes[at(walk.second[at(*i)])];
    if (sizes[at(*i)] <= largest) candidates.push_back(*i);
  }
  const int wanted = clades_to_cut();
  for (int tries = 4 * wanted; tries > 0 && static_cast<int>(forest.pieces().size()) < wanted;
       --tries)
    forest.cut(node_to_cut(candidates));
}

/// In random order, but larger clades first if that is wanted, so that what was cut from within a
/// clade finds it there.
void rebuilder::put_in_order(std::vector<tree_piece>& pieces) {
  for (std::size_t i = pieces.size(); i > 1; --i)
    std::swap(pieces[i - 1], pieces[at(context_.random.draw() % static_cast<int>(i))]);
  if (!options_.ancfirst) return;
  const auto rank = [](const tree_piece& piece) { return std::max(piece.size, 2); };
  std::stable_sort(pieces.begin(), pieces.end(),
                   [&rank](const auto& a, const auto& b) { return rank(a) > rank(b); });
}

double rebuilder::cycle() {
  context_.random.seed(static_cast<unsigned>(seeds_.current()));
  seeds_.advance();
  tree_in_pieces forest(context_, tree_);
  cut_clades(forest);
  put_in_order(forest.pieces());
  forest.make_sets();
  forest.join_all(tree_);
  return tbr_swap(context_, tree_, {});
}

/// The table of the best trees is what lies in the slots of this run.
void rebuilder::store(double score) {
  if (!has_slots()) return;
  const int held = context_.trees.ntrees - task_.first_slot;
  const bool has_room = context_.trees.ntrees < limit();
  if (has_room && (options_.keepall || held < options_.sample)) {
    store_tree(context_, tree_, context_.trees.ntrees, score);
    return;
  }
  result_.buffer_full |= !has_room && (options_.keepall || held < options_.sample);
  int worst = -1;
  for (int t = task_.first_slot; t < context_.trees.ntrees; ++t)
    if (worst < 0 || record_of(context_, t).score > record_of(context_, worst).score) worst = t;
  if (worst >= 0 && is_better_score(score, record_of(context_, worst).score, kind()))
    replace_tree(context_, tree_, worst, score);
}

void rebuilder::reset_if_due(double score) {
  if (score <= result_.best + options_.excess + tolerance_of(kind())) return;
  if (options_.reset == 0 || ++cycles_without_match_ < options_.reset) return;
  cycles_without_match_ = 0;
  std::ranges::copy(best_tree_, tree_.begin());
}

void rebuilder::end_cycle(double score) {
  ++result_.cycles;
  take_best(score);
  result_.hits += is_same_score(score, result_.best, kind());
  store(score);
  const bool is_due = settings.status_replications > 0 && task_.counts_cycles &&
                      result_.cycles % settings.status_replications == 0;
  report_status(context_, score, is_due);
  reset_if_due(score);
}

void rebuilder::run_cycles() {
  context_.shown.stage = stage_rebuild;
  for (int i = 0; i < options_.cycles && !is_over(); ++i) {
    if (task_.counts_cycles) context_.shown.replication = result_.cycles + 1;
    end_cycle(cycle());
  }
}

/// If many trees are as good as the best, some of these stay, so that others come in.
void rebuilder::dump_sample() {
  std::vector<int> best;
  for (int t = task_.first_slot; t < context_.trees.ntrees; ++t)
    if (is_within_bound(record_of(context_, t).score, result_.best, kind())) best.push_back(t);
  if (options_.sample >= static_cast<int>(best.size()) * 10) return;
  const std::size_t wanted = std::min(at((options_.sample + 9) / 10), best.size());
  std::vector<std::uint8_t> stays(at(context_.trees.ntrees), 1);
  std::fill(stays.begin() + task_.first_slot, stays.end(), std::uint8_t{0});
  for (std::size_t i = 0; i < wanted; ++i) {
    const int left = static_cast<int>(best.size() - i);
    std::swap(best[i], best[i + at(context_.random.draw() % left)]);
    stays[at(best[i])] = 1;
  }
  keep_trees(context_, stays);
}

void rebuilder::hybridize() {
  hybrid_task task{.slots = {}, .reseeds = false, .shows_rounds = false};
  for (int t = task_.first_slot; t < context_.trees.ntrees; ++t) task.slots.push_back(t);
  task.target_score = options_.findscore;
  if (task.slots.size() < 2) return;
  hybrid_settings how = task_.hybrid;
  how.sample = options_.sample;
  hybridize_trees(context_, how, task);
  for (int t = task_.first_slot; t < context_.trees.ntrees; ++t) {
    if (!is_better_score(record_of(context_, t).score, result_.best, kind())) continue;
    std::ranges::transform(slot_tree(context_, t), tree_.begin(), plain_ancestor);
    take_best(record_of(context_, t).score);
  }
}

rebuild_result rebuilder::run() {
  take_best(tree_length(context_.data, tree_));
  store(result_.best);
  const int series = hybridizes() ? options_.hybrid : 1;
  // Two terminals beside the outgroup always stay, and a third one finds its old place again.
  constexpr int fewest_taxa = 5;
  if (context_.data.n < fewest_taxa) return result_;
  for (int i = 0; i < series && !is_over(); ++i) {
    run_cycles();
    if (!hybridizes() || is_over()) continue;
    hybridize();
    if (!interrupted()) ++result_.hybridizations;
    if (options_.dump && i + 1 < series && !is_over()) dump_sample();
  }
  if (!has_slots()) std::ranges::copy(best_tree_, tree_.begin());
  return result_;
}

}  // namespace

rebuild_result rebuild_search(search_context& context, std::span<std::int32_t> tree,
                              const rebuild_settings& options, const rebuild_task& task) {
  return rebuilder(context, tree, options, task).run();
}

}  // namespace zeb
