// `bbreak`: options, run and summary of branch swapping on the trees of the buffer.
#include <vector>

#include "base/errors.h"
#include "console/output.h"
#include "engine/collapsing/collapsing.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "search/commands.h"
#include "search/drivers/bbreak.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/search_session.h"
#include "search/store/full_rule.h"
#include "search/store/stored_trees.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// The swapper's settings, and the engine's that this command shows with them.
struct bbreak_settings {
  swap_settings swap;
  bool wide_words = true;
};
using option = search_option<bbreak_settings>;

std::vector<option> bbreak_options() {
  auto act = [](std::string_view keyword, void (*apply)(bbreak_settings&, int)) {
    return action<bbreak_settings>(keyword, apply);
  };
  return {
      choice<bbreak_settings>("tbr", [](bbreak_settings& b, int) { b.swap.use_tbr = true; }),
      choice<bbreak_settings>("spr", [](bbreak_settings& b, int) { b.swap.use_tbr = false; }),
      act("fillonly", [](bbreak_settings& b, int on) { b.swap.fill_only = on != 0; }),
      act("mulpars", [](bbreak_settings& b, int on) { b.swap.mulpars = on != 0; }),
      act("safe", [](bbreak_settings& b, int on) { b.swap.safe_unclip = on != 0; }),
      act("skipspr", [](bbreak_settings& b, int on) { b.swap.skip_spr = on != 0; }),
      toggle("xbits", &bbreak_settings::wide_words),
      act("preproc", [](bbreak_settings& b, int on) { b.swap.preproc = on; }),
      act("stratswap", [](bbreak_settings& b, int on) { b.swap.stratified = on != 0; }),
      {.keyword = "limit",
       .kind = option::argument::optional_number,
       .range = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()},
       .default_number = -1,
       .has_negative = false,
       .apply =
           [](bbreak_settings& b, int n) {
             if (n < 0) error_end("TBR move limit must be 0 (no limit) or greater");
             b.swap.move_limit = n;
           }},
      choice<bbreak_settings>("nolimit", [](bbreak_settings& b, int) { b.swap.move_limit = 0; }),
      act("randclip", [](bbreak_settings& b, int on) { b.swap.random_clip = on != 0; }),
      {.keyword = "inters",
       .kind = option::argument::optional_number,
       .range = {1, 2},
       .missing = "Node clusters can use intersections as 1 or 2 (sorted)",
       .too_large = "Node clusters can use intersections as 1 or 2 (sorted)",
       .default_number = 1,
       .has_negative = false,
       .apply = [](bbreak_settings& b, int n) { b.swap.use_inters = n; }},
      choice<bbreak_settings>("nointers", [](bbreak_settings& b, int) { b.swap.use_inters = 0; }),
      {.keyword = "clustersize",
       .kind = option::argument::optional_number,
       .range = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()},
       .default_number = 0,
       .has_negative = false,
       .apply =
           [](bbreak_settings& b, int n) {
             if (n < 3 || n > 1000) {
               error_end_f("Cannot set clustersize to %i (must be 3-1000)\n", n);
             }
             b.swap.cluster_size = n;
           }},
  };
}

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
  if (engine.long_words & 2) emit("\n     * Using 64 bits when possible");
  if (swapping.fill_only) emit("\n     * Stopping when the tree buffer is full");
  if (swapping.stratified) emit("\n     * Stratified swapping of landmark characters");
  if (swapping.preproc > 0) emit("\n     * Clips that promise most come first");
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
  swapping = now.swap;
  if (now.wide_words != before.wide_words) {
    engine.long_words = now.wide_words ? 2 : 0;
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

/// Here continuous characters show the digits that their data have.
std::string start_score_text(double score) {
  const search_data& data = *current_search_data;
  const bool thousandths = data.has_continuous && !data.implied_on;
  return thousandths ? text_of("%.3f", score) : score_text(score);
}

void tell_start(int trees) {
  double best = unknown_score;
  for (int t = 0; t < trees; ++t) {
    best = std::min(best, searching.tree_records[static_cast<std::size_t>(t)].score);
  }
  emit(text_of("Start swapping from %i trees (score %s", trees, start_score_text(best).c_str()));
  if (search_settings.suboptimal > 1e-9) {
    emit("-", start_score_text(best + search_settings.suboptimal));
  }
  emit(")...\n");
}

void summarise(const bbreak_result& result) {
  const char* kind = swapping.use_tbr ? "TBR" : "SPR";
  if (result.interrupted) {
    emit("Search was interrupted...\n");
  } else {
    emit(text_of("Completed %s branch-swapping.\n", kind));
  }
  if (swapping.use_tbr && swapping.move_limit > 0) {
    emit(text_of("Note: TBR limited to moves within %i nodes of original position.\n",
                 swapping.move_limit));
  }
  if (collapsing.rule > 2 && search_settings.suboptimal > 0) {
    emit("Note: some trees of different length may become identical if collapsed.\n");
  }
  emit("Total rearrangements examined: ", rearrangements_text(), ".\n");
  tell_equal_as_collapsed(result.equal_by_full_rule);
  emit(text_of("%i trees, best score %s.\n", store.ntrees, score_text(result.best).c_str()));
  if (result.full_at < 0) return;
  emit(text_of("Maxtrees was reached when swapping tree %i.", result.full_at));
  if (!result.not_swapped.empty()) emit("  Didn't swap tree(s) ", result.not_swapped);
  emit("\n");
}

void swap_trees_in_memory() {
  const search_session session;
  tell_start(store.ntrees);
  const bbreak_result result = swap_buffer();
  settings.timeout_armed = false;
  searching.tbr_swapping = swapping.use_tbr;
  searching.spr_swapping = !swapping.use_tbr;
  searching.last_best = result.best;
  summarise(result);
}

}  // namespace

void bbreak_command() {
  const bbreak_settings before{swapping, (engine.long_words & 2) != 0};
  bbreak_settings now = before;
  const std::vector<option> options = bbreak_options();
  const option_outcome outcome = read_search_options(now, std::span<const option>(options),
                                                     "Unidentified string in bbreak options: %s\n",
                                                     "Wrong argument for bbreak: %c");
  if (outcome == option_outcome::run) refuse_changes(before, now);
  take_settings(before, now);
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  require_data("swapping branches");
  if (store.ntrees == 0) error_end("No trees to swap");
  swap_trees_in_memory();
  condense_if_automatic();
}

}  // namespace zeb
