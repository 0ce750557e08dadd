// `rebuild`: options, run and summary.
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/fusing.h"
#include "search/drivers/rebuild.h"
#include "search/search_journal.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "trees/constraints/constraints.h"
#include "trees/tree_groups.h"

namespace zeb {
namespace {

constexpr char wrong_clip[] = "Give absolute number of taxa to clip, as range (min-max)";
constexpr char wrong_reset[] = "Give number of cycles of no-match to reset rebuild";
constexpr char wrong_excess[] = "Give score excess to count a cycle as no-match";
constexpr option_range counts = {0, 1'000'000};

void read_reset(rebuild_settings& settings) {
  constexpr int standard_cycles = 500;
  double cycles = standard_cycles;
  double excess = settings.excess;
  read_optional_whole(&cycles);
  if (!(cycles >= 1 && cycles <= counts.highest)) error_end(wrong_reset);
  if (accept_char('+') && !read_optional_float(&excess)) error_end(wrong_excess);
  if (!(excess >= 0)) error_end(wrong_excess);
  settings.reset = static_cast<int>(cycles);
  settings.excess = excess;
}

constexpr command_options rows = {
    number<&rebuild_settings::cycles>("cycles", counts, "Give number of cycles of rebuilding")
        .help("cycles, in each round"),
    number<&rebuild_settings::clip_most>("clip", counts, wrong_clip)
        .with<&rebuild_settings::clip_least>()
        .then<&rebuild_settings::clip_most>('-', counts, wrong_clip)
        .argument("J[-K]")
        .help("clades cut off in a cycle, from J to K; 0: by pclip"),
    number<&rebuild_settings::pclip>("pclip", {0, 50}, "Give percentage of taxa to clip (0-50)")
        .help("the same, per cent of the taxa"),
    number<&rebuild_settings::size>("size", counts, "Give absolute size of clade(s) to clip")
        .help("terminals of the largest clade cut off; 0: by psize"),
    number<&rebuild_settings::psize>(
        "psize", {0, 100}, "Give max. size of clades to clip (as percentage of tree size, 0-100)")
        .help("the same, per cent of the taxa"),
    form<read_reset>("reset").no().also<&rebuild_settings::reset>(0).argument("[N][+S]").help(
        "go back to the best tree after N cycles (500) that end more than S (5) above it "
        "[off]"),
    number<&rebuild_settings::hybrid>("hybrid", counts,
                                      "Give number of rounds of hybridization to do")
        .no()
        .help("rounds, each of these cycles and then hybridisation of the best trees"),
    number<&rebuild_settings::sample>("sample", {2, counts.highest},
                                      "Give number of trees to use for hybridizations (2 or more!)")
        .help("best trees kept for hybridisation"),
    toggle<&rebuild_settings::ancfirst>("ancfirst")
        .help("clades of more than two terminals go back before what was cut from within them"),
    toggle<&rebuild_settings::keepall>("keepall").help("keep all trees made, not only the best"),
    toggle<&rebuild_settings::dump>("dump").help(
        "after hybridisation keep a tenth of the sample only, where as many are best"),
    real<&rebuild_settings::findscore>("findscore", {0, 4294967295.0},
                                       "Give score to give up rebuilding")
        .no()
        .help("stop when a score of X or better is found"),
};

void check_settings(const rebuild_settings& wanted, option_outcome) {
  if (wanted.clip_least > wanted.clip_most) error_end(wrong_clip);
}

void list_settings() {
  const rebuild_settings& r = rebuilding;
  emit("Settings for tree-rebuilding:\n");
  emit(text_of("    * %i cycles, clipping ", r.cycles));
  emit(r.clip_most > 0 ? text_of("%i-%i clades", r.clip_least, r.clip_most)
                       : text_of("%i%% of the taxa", r.pclip));
  emit(r.size > 0 ? text_of(" of up to %i taxa\n", r.size)
                  : text_of(" of up to %i%% of the taxa\n", r.psize));
  if (r.ancfirst) emit("    * Re-inserting clades before their descendants\n");
  if (r.hybrid > 0) {
    emit(text_of("    * Hybridizing results %i times, with a sample size of %i\n", r.hybrid,
                 r.sample));
    if (r.dump) emit("    * Keeping a sample of the best trees only after hybridizing\n");
  } else {
    emit("    * Not hybridizing results\n");
  }
  if (r.reset > 0) {
    emit(
        text_of("    * After %i cycles without matching score, resetting to best tree\n", r.reset));
    emit("    * Scores more than ", exact_text(r.excess), " above the best are no match\n");
  }
  emit(r.keepall ? "    * Keeping all trees\n" : "    * Keeping the best trees only\n");
  if (r.findscore > 0) {
    emit("    * Abandoning search as soon as score ", exact_text(r.findscore), " found\n");
  }
}

void check_start() {
  if (store.ntrees == 0) error_end("No trees to rebuild");
  if (constraints.active) error_end("Sorry, cannot rebuild trees with constraints");
  const int free_slots = store.maxtrees - store.ntrees;
  if (rebuilding.hybrid > 0 && rebuilding.sample > free_slots) {
    error_end(text_of("Can't hybridize with samplesize %i and space for only %i additional trees",
                      rebuilding.sample, free_slots));
  }
}

void tell_result(const search_context& context, const rebuild_result& result) {
  if (interrupted()) emit("Search was interrupted...\n");
  if (result.hybridizations > 0) {
    emit(text_of("Completed %i rounds of hybridization (%i rebuilding cycles).\n",
                 result.hybridizations, result.cycles));
  } else {
    emit(text_of("%i rebuilding cycles completed.\n", result.cycles));
  }
  emit("Total rearrangements examined: ", rearrangements_text(context.rearrangements), ".\n");
}

void run_rebuild() {
  search_session session;
  search_context& context = session.context();
  seed_generator(context.random);
  begin_reports(context);
  fetch_tree(context, slot_tree(context, 0));
  const int trees_before = context.trees.ntrees;
  const rebuild_result result =
      rebuild_search(context, context.working_tree, rebuilding,
                     {.first_slot = trees_before, .counts_cycles = true, .hybrid = fusing.hybrid});
  disarm_time_limit();
  const double best = best_stored(context, 0);
  report_status(context, best, true);
  int equal = 0;
  if (!rebuilding.keepall) {
    filter_by_score(context, best);
    equal = drop_equal_by_full_rule(context);
  }
  group_automatically(rebuilding.keepall ? trees_before : 0, context.trees.ntrees, "rebuild");
  tell_result(context, result);
  tell_equal_as_collapsed(equal);
  const std::string score = score_text(context.data, best);
  emit(text_of("Saved %i trees, best score %s\n", context.trees.ntrees, score.c_str()));
  keep_best_score(best);
  note_search(rebuild_options, {.best = best,
                                .score = score,
                                .trees = context.trees.ntrees,
                                .rearrangements = context.rearrangements.total(),
                                .interrupted = interrupted()});
}

}  // namespace

constexpr option_table rebuild_options =
    rows.table("rebuild", {.unknown = "Unidentified string in rebuild options: %s",
                           .wrong_sign = "Give rebuild options with \":\" or \"=\";\n"
                                         "or use \"rebuild;\" to run with current settings"})
        .with_changes([] {
          std::string text = changed_options(rebuilding, rebuild_options);
          if (rebuilding.reset > 0)
            text += text_of("%sreset %i+", text.empty() ? "" : " ", rebuilding.reset) +
                    exact_text(rebuilding.excess);
          return text;
        });

void rebuild_command() {
  const option_outcome outcome = read_search_options(rebuilding, rebuild_options, check_settings);
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  require_data("rebuilding trees");
  check_start();
  run_rebuild();
  condense_if_automatic();
  tell_distinct_trees();
}

}  // namespace zeb
