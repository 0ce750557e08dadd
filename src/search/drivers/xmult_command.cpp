// `xmult`: options, run and summary.
#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/combined.h"
#include "search/drivers/cycle_options.h"
#include "search/search_journal.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/store/filter.h"
#include "trees/tree_groups.h"

namespace zeb {
namespace {

/// A level sets sectors, too.
struct xmult_settings {
  combined_settings search;
  sector_settings sector;
};
constexpr auto search = &xmult_settings::search;

void read_level(xmult_settings& settings) {
  double level = 0;
  if (!read_optional_float(&level) || level < 0 || level > 10) error_end("Give search level");
  double taxa = 0;
  if (!read_optional_whole(&taxa)) taxa = matrix.present ? active_taxa() : 0;
  if (taxa < 4) error_end("Give the number of taxa for the level, or read data before");
  set_level(settings.search, settings.sector, level, static_cast<int>(taxa));
}

/// Stages that aren't built.
template <const char* const& name>
void refuse_stage(xmult_settings&) {
  error_end(text_of("\"%s\" in the combined search is not available yet", name));
}
constexpr const char* css = "css";
constexpr const char* hfuse = "hfuse";
constexpr const char* rebuild = "rebuild";
constexpr const char* autoconst = "autoconst";
constexpr const char* consense = "consense";
constexpr const char* retouch = "retouch";
constexpr const char* chklevel = "chklevel";
constexpr const char* hybrid = "hybrid";
constexpr const char* picktype = "picktype";

template <const char* const& name>
constexpr auto unbuilt() {
  return form<refuse_stage<name>>(name).help("(not available yet)");
}

constexpr option_range scores = {0, 4294967295.0};

constexpr command_options rows = {
    number<search, &combined_settings::hits>("hits", {1, 100'000}, "Give number of hits to do")
        .help("hits to the best score before stopping"),
    number<search, &combined_settings::replications>("replications", {1, 100'000},
                                                     "Give initial number of replications")
        .help("replications for each hit"),
    real<search, &combined_settings::targetscore>("targetscore", scores,
                                                  "Give target score (0 = no initial target)")
        .no()
        .help("search until score X is found"),
    toggle<search, &combined_settings::update>("update").help(
        "a better score becomes the one to hit"),
    real<search, &combined_settings::giveupscore>("giveupscore", scores,
                                                  "Give score to give up (0 = no give up score)")
        .no()
        .help("stop as soon as score X is found"),
    toggle<search, &combined_settings::rss>("rss").help("random sectors in each replication"),
    unbuilt<css>(),
    toggle<search, &combined_settings::xss>("xss").help("exclusive sectors in each replication"),
    number<search, &combined_settings::fuse>("fuse", {1, 100}, "Give number of fuses to do (1-100)")
        .no()
        .help("rounds of fusing for the trees of a hit"),
    number<search, &combined_settings::gfuse>("gfuse", {2, 100},
                                              "Give number of hits to do global fusing (2-100)")
        .no()
        .help("every N hits fuse all trees"),
    unbuilt<hfuse>(),
    unbuilt<rebuild>(),
    number<search, &combined_settings::drift>("drift", {1, 100'000},
                                              "Give number of drift iterations to do")
        .no()
        .help("cycles of drifting in each replication"),
    number<search, &combined_settings::ratchet>("ratchet", {1, 100'000},
                                                "Give number of ratchet iterations to do")
        .no()
        .help("cycles of the ratchet in each replication"),
    unbuilt<autoconst>(),
    unbuilt<consense>(),
    toggle<search, &combined_settings::keepall>("keepall").help(
        "keep the trees of all replications, not only the best"),
    unbuilt<retouch>(),
    form<read_level>("level").help(
        "effort, 0 to 10: sets replications, drift, fuse and the sectors for the active taxa, or "
        "for T taxa"),
    unbuilt<chklevel>(),
    toggle<search, &combined_settings::multiply>("multiply")
        .help("when the score is hit, look for more trees by fusing"),
    toggle<search, &combined_settings::verbose>("verbose").help("tell what each set found"),
    unbuilt<hybrid>(),
    unbuilt<picktype>(),
};

std::string sector_text() {
  if (!combined.rss && !combined.xss) return "no sectorial searches";
  std::string text = combined.rss ? "random" : "";
  if (combined.xss) text += combined.rss ? " and exclusive" : "exclusive";
  return text + " sectorial searches";
}

void list_settings() {
  std::vector<std::string> lines = {
      text_of("Using %i replications as starting point for each hit", combined.replications)};
  std::string stages = "Each replication with " + sector_text();
  if (combined.ratchet > 0 || combined.drift > 0) stages += ",\n       with ";
  if (combined.ratchet > 0) stages += text_of("ratchet (%i iters.)", combined.ratchet);
  if (combined.ratchet > 0 && combined.drift > 0) stages += " and ";
  if (combined.drift > 0) stages += text_of("drifting (%i iters.)", combined.drift);
  lines.push_back(stages);
  lines.push_back(combined.fuse > 0 ? text_of("Fusing trees (%i rounds)", combined.fuse)
                                    : "Not fusing trees");
  if (combined.gfuse > 0)
    lines.push_back(text_of("Fusing all trees every %i hits", combined.gfuse));
  lines.push_back(combined.targetscore > 0
                      ? text_of("Searching until score %g found", combined.targetscore)
                      : text_of("Finding best score %i times (=hits)", combined.hits));
  if (combined.giveupscore > 0)
    lines.push_back(text_of("Giving up when score %g found", combined.giveupscore));
  lines.emplace_back("Not consensing trees during search");
  if (combined.level >= 0) lines.push_back(text_of("Search level %g", combined.level));
  list_lines("Extra search settings: ", lines);
}

void check_settings(const xmult_settings& wanted, option_outcome) {
  if (wanted.search.targetscore > 0 && wanted.search.fuse == 0)
    error_end("To search for a target score, must use fusing or hybridization");
}

/// Two lines by which a user can judge whether the search was enough.
void tell_how_sure(const search_context& context, const combined_result& result) {
  emit(text_of("Best score hit %i times out of %i.\n", result.hits, result.sets));
  emit("Best score: ", score_text(context.data, result.best),
       text_of(", found after %s.  %i trees retained.\n", time_text(result.seconds_to_best).c_str(),
               context.trees.ntrees));
}

void run_combined() {
  search_session session;
  search_context& context = session.context();
  if (context.trees.ntrees >= context.trees.maxtrees)
    error_end("No space to store more trees! Increase max.trees and retry.");
  if (combined.rss) tell_limit_of_sectors(context, sectors);
  seed_generator(context.random);
  const combined_result result =
      combined_search(context, combined, {sectors, ratchet, drift, fusing});
  disarm_time_limit();
  report_status(context, result.best < unknown_score ? result.best : no_score, true);
  if (result.best < unknown_score && !combined.keepall) {
    filter_by_score(context, result.best);
    tell_equal_as_collapsed(drop_equal_by_full_rule(context));
  }
  group_automatically(0, context.trees.ntrees, "xmult");
  emit(interrupted() ? "Search was interrupted...\n" : "Completed search.\n");
  if (result.buffer_full) emit("No space to store more trees! Increase max.trees and retry.\n");
  emit("Total rearrangements examined: ", rearrangements_text(context.rearrangements), ".\n");
  if (context.constraints_in_force) emit("Constraints enforced during search.\n");
  tell_how_sure(context, result);
  keep_best_score(result.best);
  keep_hits(result.hits);
  note_search(xmult_options, {.best = result.best,
                              .score = score_text(context.data, result.best),
                              .trees = context.trees.ntrees,
                              .rearrangements = context.rearrangements.total(),
                              .interrupted = interrupted()});
}

}  // namespace

constexpr option_table xmult_options =
    rows.table("xmult", {.unknown = "Unidentified string in xmult options: %s",
                         .wrong_sign = "Wrong search argument: %c"})
        .with_changes([] {
          return changed_options(xmult_settings{combined, sectors}, xmult_options);
        });

void xmult_command() {
  xmult_settings now{combined, sectors};
  const option_outcome outcome = read_search_options(now, xmult_options, check_settings);
  combined = now.search;
  sectors = now.sector;
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  require_data("searching");
  run_combined();
  condense_if_automatic();
  tell_distinct_trees();
}

}  // namespace zeb
