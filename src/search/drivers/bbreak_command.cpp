// `bbreak`: options, run and summary of branch swapping on the trees of the buffer.
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "engine/settings.h"
#include "language/interpreter.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/bbreak.h"
#include "search/search_journal.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// The swapper's settings, and the engine's that this command shows with them.
struct bbreak_settings {
  swap_settings swap;
  bool wide_words = true;
};
constexpr auto swap = &bbreak_settings::swap;

constexpr command_options rows = {
    choice<swap, &swap_settings::use_tbr>("tbr", 1).help("tree bisection and reconnection"),
    choice<swap, &swap_settings::use_tbr>("spr", 0).help("subtree pruning and regrafting"),
    toggle<swap, &swap_settings::fill_only>("fillonly")
        .help("stop as soon as the memory for trees is full"),
    toggle<swap, &swap_settings::mulpars>("mulpars").help(
        "save equally good trees; without it each tree is replaced by the best that it leads "
        "to"),
    toggle<swap, &swap_settings::safe_unclip>("safe").help("remake all state sets after each move"),
    toggle<swap, &swap_settings::skip_spr>("skipspr").help(
        "other searches leave out SPR before TBR on one tree"),
    toggle<&bbreak_settings::wide_words>("xbits").help(
        "use the widest words of the processor; only with \":\""),
    toggle<swap, &swap_settings::promising_first>("preproc").help(
        "with nomulpars, clip first where most can be gained"),
    toggle<swap, &swap_settings::stratified>("stratswap")
        .help("stratified swapping; concerns landmarks only"),
    number<swap, &swap_settings::move_limit>("limit", {},
                                             "TBR move limit must be 0 (no limit) or greater")
        .no()
        .help("TBR moves within N nodes of the old place only"),
    toggle<swap, &swap_settings::random_clip>("randclip")
        .help("clip in random order, from the seed of \"rseed\""),
    optional_number<swap, &swap_settings::use_inters>(
        "inters", 1, {1, 2}, "Node clusters can use intersections as 1 or 2 (sorted)")
        .no()
        .help("compare two clusters by the words that tell their branches apart (2: these words "
              "side by side), when all weights are 1; only with \":\". Results are the same; on "
              "most processors it is slower"),
    number<swap, &swap_settings::cluster_size>("clustersize", {3, 1000},
                                               "Cannot set clustersize to %i (must be 3-1000)\n")
        .help("nodes in a cluster, 3 to 1000; only with \":\""),
};

void list_settings() {
  emit("Branch-swapping settings:\n     * swap trees with ");
  if (!swapping.use_tbr) {
    emit("SPR");
  } else if (swapping.move_limit > 0) {
    emit(text_of("TBR (moving/rerooting within %i nodes)", swapping.move_limit));
  } else {
    emit(text_of("TBR (global, clustersize %i)", swapping.cluster_size));
  }
  emit("\n     * Mulpars is ", swapping.mulpars ? "ON" : "OFF");
  emit(swapping.safe_unclip ? "\n     * Using safe unclip" : "\n     * Using quick unclip");
  if (swapping.random_clip) emit("\n     * Randomizing clipping sequence");
  if (swapping.use_inters > 0) emit("\n     * Node clusters use union/intersection");
  if (engine.long_words) emit("\n     * Using 64 bits when possible");
  if (swapping.fill_only) emit("\n     * Stopping when the tree buffer is full");
  if (swapping.stratified) emit("\n     * Stratified swapping of landmark characters");
  if (swapping.promising_first) emit("\n     * Clips that promise most come first");
  if (!swapping.skip_spr) emit("\n     * SPR before TBR on single trees");
  emit("\n");
}

/// What changes the workspace can't change in a command that goes on to swap.
void refuse_changes(const bbreak_settings& before, const bbreak_settings& now) {
  if (now.swap.cluster_size != before.swap.cluster_size) {
    error_end("Clustersize can be changed only with the \":\" option");
  }
  if (now.wide_words != before.wide_words) {
    error_end("Bit usage (32-64) can be changed only with the \":\" option");
  }
  if (now.swap.use_inters != before.swap.use_inters) {
    error_end("Node cluster usage can be changed only with the \":\" option");
  }
}

void take_settings(const bbreak_settings& before, const bbreak_settings& now) {
  set_swapping(now.swap);
  if (now.wide_words != before.wide_words) {
    allow_long_words(now.wide_words);
    drop_packed_data();
  }
  if (now.swap.stratified && !before.swap.stratified) {
    emit("Note: stratified swapping concerns landmark characters only.\n");
  }
  if (now.swap.cluster_size == before.swap.cluster_size) return;
  if (matrix.present && now.swap.cluster_size > active_taxa()) {
    warning_f("A clustersize larger than number of active taxa (%i) may be unsafe\n",
              active_taxa());
  }
  emit(text_of("Clustersize: %i nodes\n", now.swap.cluster_size));
}

void tell_start(search_context& context) {
  const int trees = context.trees.ntrees;
  const double allowed = context.rules.suboptimal;
  double best = unknown_score;
  for (int t = 0; t < trees; ++t) best = std::min(best, record_of(context, t).score);
  emit(text_of("Start swapping from %i trees (score %s", trees,
               score_text(context.data, best).c_str()));
  if (allowed > 1e-9) emit("-", score_text(context.data, best + allowed));
  emit(")...\n");
}

void summarise(const search_context& context, const bbreak_result& result) {
  const swap_settings& how = context.rules.swap;
  const char* kind = how.use_tbr ? "TBR" : "SPR";
  if (result.interrupted) {
    emit("Search was interrupted...\n");
  } else {
    emit(text_of("Completed %s branch-swapping.\n", kind));
  }
  if (how.use_tbr && how.move_limit > 0) {
    emit(text_of("Note: TBR limited to moves within %i nodes of original position.\n",
                 how.move_limit));
  }
  if (context.rules.collapse.rule > 2 && context.rules.suboptimal > 0) {
    emit("Note: some trees of different length may become identical if collapsed.\n");
  }
  emit("Total rearrangements examined: ", rearrangements_text(context.rearrangements), ".\n");
  tell_equal_as_collapsed(result.equal_by_full_rule);
  emit(text_of("%i trees, best score %s.\n", context.trees.ntrees,
               score_text(context.data, result.best).c_str()));
  if (result.full_at < 0) return;
  emit(text_of("Maxtrees was reached when swapping tree %i.", result.full_at));
  if (!result.not_swapped.empty()) emit("  Didn't swap tree(s) ", result.not_swapped);
  emit("\n");
}

void swap_trees_in_memory() {
  search_session session;
  search_context& context = session.context();
  if (context.rules.swap.random_clip) seed_generator(context.random);
  tell_start(context);
  const bbreak_result result = swap_stored_trees(context, true);
  disarm_time_limit();
  note_full_buffer(result.full_at >= 0);
  keep_swapper(context.rules.swap.use_tbr);
  keep_best_score(result.best);
  summarise(context, result);
  note_search(bbreak_options, {.best = result.best,
                               .score = score_text(context.data, result.best),
                               .trees = context.trees.ntrees,
                               .rearrangements = context.rearrangements.total(),
                               .interrupted = result.interrupted});
}

}  // namespace

constexpr option_table bbreak_options =
    rows.table("bbreak", {.unknown = "Unidentified string in bbreak options: %s\n",
                          .wrong_sign = "Wrong argument for bbreak: %c"})
        .with_changes([] {
          return changed_options(bbreak_settings{swapping, engine.long_words}, bbreak_options);
        });

void bbreak_command() {
  const bbreak_settings before{swapping, engine.long_words};
  bbreak_settings now = before;
  const option_outcome outcome = read_search_options(
      now, bbreak_options, [&before](const bbreak_settings& wanted, option_outcome wish) {
        if (wish == option_outcome::run) refuse_changes(before, wanted);
      });
  take_settings(before, now);
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  require_data("swapping branches");
  if (store.ntrees == 0) error_end("No trees to swap");
  swap_trees_in_memory();
  condense_if_automatic();
  tell_distinct_trees();
}

}  // namespace zeb
