#include "search/drivers/mult.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "search/drivers/known_prints.h"
#include "search/drivers/replication.h"
#include "search/drivers/seed_sequence.h"
#include "search/part_search.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"
#include "search/store/tree_identity.h"
#include "search/workers/worker_pool.h"
#include "trees/tree_slots.h"

namespace zeb {
namespace {

/// Of so many replications, and one more: the last ones end with it.
std::vector<int> seeds_of_replications(search_context& context, int replications) {
  std::vector<int> seeds;
  seed_sequence sequence(context.random, context.rules.seed_step);
  for (int r = 0; r <= replications; ++r) {
    seeds.push_back(sequence.current());
    context.random.seed(static_cast<unsigned>(seeds.back()));
    sequence.advance();
  }
  return seeds;
}

/// One run of `mult`.
class replicated_search {
 public:
  replicated_search(search_context& context, const mult_settings& options,
                    const mult_stages& stages)
      : context_(context),
        options_(options),
        seeds_(seeds_of_replications(context, options.replications)),
        makes_(context, options, stages,
               [this](auto form, double score) { return is_known(form, score); }) {}
  mult_result run();

 private:
  void begin();
  bool make_room();
  void note_full_buffer();
  replication_outcome made_here(int replication) {
    return makes_.make(seeds_[at(replication - 1)], seeds_[at(replication)]);
  }
  bool replicate(worker_pool& workers, int replication);
  bool take(const replication_outcome& found);
  void end_at(const part_state& state, bool is_full);
  bool store_found(const found_tree& tree);
  void count_hit(bool overflowed);
  void drop_worse_trees();
  bool is_known(std::span<const std::int32_t> form, double score);
  std::uint64_t print_of(std::span<const std::int32_t> form) const {
    return tree_print(form, context_.data.n);
  }
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& context_;
  const mult_settings& options_;
  const std::vector<int> seeds_;
  mult_result result_;
  double score_ = unknown_score;  // of the last replication
  bool is_worker_ = false;        // of this run
  known_prints prints_;
  replication_maker makes_;
};

/// Workers see the trees that were taken meanwhile by their prints.
bool replicated_search::is_known(std::span<const std::int32_t> form, double score) {
  return is_worker_ ? prints_.has(print_of(form)) : has_form(context_, form, score);
}

void replicated_search::count_hit(bool overflowed) {
  if (is_same_score(score_, result_.best, kind())) {
    ++result_.hits;
    result_.overflowed |= overflowed;
  } else if (score_ < result_.best) {
    result_.hits = 1;
    result_.overflowed = overflowed;
    result_.best = score_;
    context_.best_score = score_;
  }
}

/// A full buffer of trees that the end would drop doesn't stop the search.
void replicated_search::drop_worse_trees() {
  const double best = std::min(result_.best, score_);
  if (options_.keepall || best >= unknown_score) return;
  purge_above(context_, best + context_.rules.suboptimal, 0);
}

/// Is there room for a tree?
bool replicated_search::make_room() {
  if (context_.trees.ntrees >= context_.trees.maxtrees) drop_worse_trees();
  return context_.trees.ntrees < context_.trees.maxtrees;
}

void replicated_search::end_at(const part_state& state, bool is_full) {
  score_ = state.score;
  context_.shown.stage = state.stage;
  add_work(context_, state.done);
  context_.shown.current_tree = context_.trees.ntrees;
  if (score_ >= unknown_score) return;
  ++result_.replications_done;
  note_score(context_, score_);
  count_hit(is_full);
}

/// False: no tree can be stored any more.
bool replicated_search::store_found(const found_tree& tree) {
  if (!make_room()) return false;
  if (store_form(context_, tree.form, tree.score)) prints_.add(print_of(tree.form));
  return true;
}

/// False: it ended where something was known, but by now that isn't.
bool replicated_search::take(const replication_outcome& found) {
  for (const replication_step& step : found.steps) {
    if (!has_form(context_, step.form, step.state.score)) continue;
    end_at(step.state, false);
    return true;
  }
  if (found.ended_as_known) return false;
  for (const status_mark& line : found.lines) record_status(context_, line);
  score_ = found.end.score;
  const bool all_stored = std::ranges::all_of(
      found.trees, [this](const found_tree& tree) { return store_found(tree); });
  end_at(found.end, found.full || !all_stored);
  return true;
}

/// False: it was to be stopped, and there is nothing to take.
bool replicated_search::replicate(worker_pool& workers, int replication) {
  const auto bytes = workers.result_of(replication - 1, [this] { report_status_best(context_); });
  if (bytes && take(replication_in(*bytes))) return true;
  if (interrupted()) return false;
  take(made_here(replication));
  return true;
}

void replicated_search::begin() {
  // Trees that were in memory before may be better than all that replications find.
  result_.best = best_stored(context_, 0);
  for (int t = 0; t < context_.trees.ntrees; ++t) prints_.add(print_of(slot_tree(context_, t)));
  context_.shown.stage = stage_wagner;
  context_.shown.current_tree = 0;
  context_.shown.replication = 0;
  begin_reports(context_);
  if (result_.best < unknown_score) context_.best_score = result_.best;
  report_status(context_, no_score, false);
}

void replicated_search::note_full_buffer() {
  --context_.shown.replication;
  report_status(context_, no_score, true);
  if (!context_.shown.silent) {
    emit(text_of("\nNOTE: Search terminated after replication %i (tree buffer full)\n",
                 context_.shown.replication));
  }
  result_.buffer_full = true;
}

mult_result replicated_search::run() {
  int& replication = context_.shown.replication;
  begin();
  worker_pool workers(part_search.sector ? 1 : options_.replications,
                      [this](int part, packet_writer& found) {
                        is_worker_ = true;
                        put(made_here(part + 1), found);
                      });
  for (replication = 1; replication <= options_.replications; ++replication) {
    if (!make_room()) {
      note_full_buffer();
      break;
    }
    if (!replicate(workers, replication)) break;
    // What workers had in hand when they were stopped is taken, too.
    if (interrupted() && !workers.has_workers()) break;
    if (settings.status_replications > 0 && replication % settings.status_replications == 0 &&
        !interrupted())
      report_status(context_, score_, true);
  }
  context_.tree_limit = context_.trees.maxtrees;
  if (!interrupted() && !result_.buffer_full) --replication;
  if (!result_.buffer_full) {
    report_status(context_, score_ < unknown_score ? score_ : no_score, true);
  }
  if (result_.replications_done == 0) result_.best = unknown_score;
  context_.random.seed(static_cast<unsigned>(seeds_.back()));
  return result_;
}

}  // namespace

mult_result mult_search(search_context& context, const mult_settings& options,
                        const mult_stages& stages) {
  return replicated_search(context, options, stages).run();
}

}  // namespace zeb
