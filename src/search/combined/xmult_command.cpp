// `xmult`: options, run and summary.
#include <algorithm>
#include <string>
#include <vector>

#include "base/arena.h"
#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "search/combined/combined.h"
#include "search/combined/settings_in_words.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/addition_options.h"
#include "search/drivers/cycle_options.h"
#include "search/moves/wagner.h"
#include "search/search_journal.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "trees/constraints/constraints.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// A level sets sectors, too.
struct xmult_settings {
  combined_settings search;
  sector_settings sector;
  bool runs = false;  // whatever sign came before the options
};
constexpr auto search = &xmult_settings::search;

void read_level(xmult_settings& settings) {
  double level = 0;
  if (!read_optional_float(&level) || level < 0 || level > highest_level)
    error_end("Give search level");
  double taxa = 0;
  if (!read_optional_whole(&taxa)) taxa = matrix.present ? active_taxa() : 0;
  constexpr double most_taxa = 1e9;  // the settings add and multiply them
  if (taxa < 4 || taxa > most_taxa)
    error_end("Give the number of taxa for the level, or read data before");
  set_level(settings.search, settings.sector, level, static_cast<int>(taxa));
}

/// "[+F or -] N"
void read_check(xmult_settings& settings) {
  combined_settings& wanted = settings.search;
  if (accept_char('+')) {
    wanted.moves_level = true;
    double step = 0;
    if (!read_optional_float(&step) || step <= 0 || step >= 2)
      error_end("Change of level (C) must 0 < C < 2");
    wanted.level_step = step;
  } else if (accept_char('-')) {
    wanted.moves_level = false;
  }
  double hits = 0;
  if (!read_optional_whole(&hits) || hits < 1 || hits > 100'000)
    error_end("Give number of hits to re-check search level");
  wanted.chklevel = static_cast<int>(hits);
}

/// "[xF]"
void read_hybrid(xmult_settings& settings) {
  settings.search.hybrid = true;
  if (!accept_char('x')) return;
  double factor = 0;
  constexpr double most = 1000;
  if (!read_optional_float(&factor) || factor < 1 || factor > most)
    error_end("Factor for extra initial builds under hybridization must be 1 or more");
  settings.search.hybrid_factor = factor;
}

constexpr auto picktype_option() {
  constexpr double standard_threshold = 1.5;
  auto option = optional_real<search, &combined_settings::picktype>(
      "picktype", {0, 100}, "Give threshold to pick fusing or hybridization (0-100)");
  option.row.keeps_without = false;
  option.row.without = standard_threshold;
  return option.no();
}

constexpr char wrong_conmax[] = "Give max. consensus hits (5-100)";
constexpr option_range scores = {0, 4294967295.0};
constexpr option_range counts = {1, 100'000};
constexpr option_range counts_or_none = {0, 100'000};
using c = combined_settings;

constexpr command_options rows = {
    number<search, &c::hits>("hits", counts, "Give number of hits to do")
        .help("hits to the best score before stopping"),
    number<search, &c::replications>("replications", counts, "Give initial number of replications")
        .help("replications for each hit"),
    real<search, &c::targetscore>("targetscore", scores,
                                  "Give target score (0 = no initial target)")
        .no()
        .help("search until score X is found"),
    toggle<search, &c::update>("update").help("a better score becomes the one to hit"),
    real<search, &c::giveupscore>("giveupscore", scores,
                                  "Give score to give up (0 = no give up score)")
        .no()
        .help("a hit ends as soon as score X is found"),
    toggle<search, &c::rss>("rss").help("random sectors in each replication"),
    toggle<search, &c::css>("css").help(
        "sectors by the groups of the constraints, yours or those of autoconst"),
    toggle<search, &c::xss>("xss").help("exclusive sectors in each replication"),
    number<search, &c::fuse>("fuse", {1, 100}, "Give number of fuses to do (1-100)")
        .no()
        .help("rounds of fusing for the trees of a hit"),
    number<search, &c::gfuse>("gfuse", {2, 100}, "Give number of hits to do global fusing (2-100)")
        .no()
        .help("every N hits fuse all trees"),
    number<search, &c::hfuse>("hfuse", {5, 100},
                              "Give number of hits to do global hybridization (5-100)")
        .no()
        .help("every N hits hybridise all trees"),
    toggle<search, &c::dumpfuse>("dumpfuse")
        .help("where fusing fails to reach the score to hit, drop what it produced"),
    number<search, &c::rebuild>("rebuild", counts_or_none, "Give number of rebuild cycles to do")
        .no()
        .help("cycles of rebuilding in each replication"),
    number<search, &c::drift>("drift", counts_or_none, "Give number of drift iterations to do")
        .no()
        .help("cycles of drifting in each replication"),
    number<search, &c::ratchet>("ratchet", counts_or_none,
                                "Give number of ratchet iterations to do")
        .no()
        .help("cycles of the ratchet in each replication"),
    number<search, &c::hold>("hold", {0, 1'000'000}, "Give number of trees to save per replication")
        .help("trees that ratchet and drift save in a replication"),
    number<search, &c::autoconst>("autoconst", {1, 3},
                                  "Give mix level (1=after wagner, 2=spr, 3=tbr)")
        .no()
        .help("begin every second replication with the clades shared with the one before: after "
              "Wagner tree (1), SPR (2) or TBR (3)"),
    toggle<search, &c::xmix>("xmix").help(
        "so begin all replications that are added where fusing fails"),
    toggle<search, &c::prvmix>("prvmix").help(
        "so begin all replications of the first hit, with the last tree in memory"),
    number<search, &c::consense>("consense", counts_or_none,
                                 "Give number of times to stabilize consensus")
        .no()
        .help("go on until the consensus of the best trees was found the same N times"),
    number<search, &c::conbase>("conbase", {1, 100}, "Give base for consensus calculations (1-100)")
        .help("hits between two looks at the consensus, at least"),
    number<search, &c::confactor>("confactor", {10, 100}, "Give consensus factor (10-100)")
        .help("hits to the next look, in per cent of those since the consensus changed"),
    number<search, &c::conmax>("conmax", {0, 100}, wrong_conmax)
        .no()
        .help("hits between two looks, at most"),
    toggle<search, &c::keepall>("keepall").help(
        "keep the trees of all replications, not only the best"),
    number<search, &c::retouch>("retouch", counts_or_none,
                                "Give number of times to retouch trees before new search")
        .no()
        .help("where fusing fails, improve the best tree N times before making others"),
    form<read_level>("level").argument("F [T]").help(
        "effort, 0 to 10: sets replications, drift, fuse and the sectors for the active taxa, or "
        "for T taxa"),
    form<read_check>("chklevel")
        .argument("[+F or -] N")
        .help("every N hits change the effort by how often fusing failed: the level by F (+0.25), "
              "or (-, or without a level) what a level sets one by one"),
    choice<search, &c::chklevel>("nochklevel", 0).help("leave the effort as it is"),
    toggle<search, &c::multiply>("multiply")
        .help("when the score is hit, look for more trees by fusing"),
    toggle<search, &c::verbose>("verbose").help("tell what each set found"),
    form<read_hybrid>("hybrid").argument("[xF]").help(
        "hybridise the trees of a hit, F times as many (5), before fusing them"),
    choice<search, &c::hybrid>("nohybrid", 0).help("don't hybridise them"),
    picktype_option().help(
        "hybridise where trees could exchange less than X per cent of their groups, 1.5 without a "
        "number; else fuse"),
    ras_option<search, &c::addition>(),
    cas_option<search, &c::addition>(),
    fas_option<search, &c::addition>(),
    ias_option<search, &c::addition>(),
    sas_option<search, &c::addition>(),
    choice<&xmult_settings::runs>("search", 1).help("run now, whatever came before the options"),
};

void check_settings(xmult_settings& wanted, option_outcome outcome) {
  settle_additions(wanted.search.addition);
  constexpr int fewest = 5;
  if (wanted.search.conmax > 0 && wanted.search.conmax < fewest) error_end(wrong_conmax);
  const bool crosses = wanted.search.fuse > 0 || wanted.search.hybrid || wanted.search.picktype > 0;
  if (wanted.search.targetscore > 0 && !crosses)
    error_end("To search for a target score, must use fusing or hybridization");
  if (outcome != option_outcome::run && !wanted.runs) return;
  if (wanted.search.rebuild > 0 && constraints.active)
    error_end("Sorry, cannot rebuild trees with constraints");
  if (wanted.search.css && wanted.search.autoconst == 0 && !constraints.active)
    error_end("Constraint-based sectorial searches require tree constraints");
  check_additions(wanted.search.addition, randomness.random_insertion, constraints.active);
}

void check_data(const search_context& context) {
  if (context.trees.ntrees >= context.trees.maxtrees)
    error_end("No space to store more trees! Increase max.trees and retry.");
  if (combined.xss && context.data.has_asymmetric)
    error_end("Some characters are Sankoff and asymmetric: can't run exclusive sectors");
  constexpr std::size_t twentieth = 20;
  if (arena_free() < arena.size / twentieth)
    warning(
        "Free memory is low (below 5% of search memory).\n"
        "You may run out of memory during the search.\n");
  if (combined.rss) tell_limit_of_sectors(context, sectors);
}

/// By which a user can judge whether the search was enough.
void tell_how_sure(const search_context& context, const combined_result& result) {
  emit(text_of("Best score hit %i times out of %i.\n", result.hits, result.sets));
  const std::string found = result.best_replication > 0
                                ? text_of("found after %s, in replication %i of %i",
                                          time_text(result.seconds_to_best).c_str(),
                                          result.best_replication, result.replications)
                                : "of trees that were in memory";
  emit("Best score: ", score_text(context.data, result.best), ", ", found,
       text_of(".  %i trees retained.\n", context.trees.ntrees));
  if (result.consensus.empty()) return;
  emit("Consensus of the best trees: ", counted(result.consensus_groups, "group", "groups"),
       result.hits_unchanged > 0
           ? text_of(", unchanged in the last %i of %i hits.\n", result.hits_unchanged, result.hits)
           : ", not settled after " + counted(result.hits, "hit", "hits") + ".\n");
}

/// What makes the consensus comparable, and the trees that go into it.
void collapse_by_swapping(search_context& context) {
  constexpr int by_tbr = 6;
  if (context.rules.collapse.rule == by_tbr) return;
  warning("To stabilize consensus, tree collapsing will be re-set to TBR");
  context.rules.collapse.rule = by_tbr;
}

/// Trees that the user had may be better than all that were found.
void take_former_best(search_context& context, combined_result& result) {
  const double stored = best_stored(context, 0);
  if (!is_better_score(stored, result.best, kind_of_scores(context.data))) return;
  result.best = stored;
  result.hits = result.best_replication = 0;
  result.consensus.clear();
}

void summarise(search_context& context, combined_result result) {
  disarm_time_limit();
  report_status(context, result.best < unknown_score ? result.best : no_score, true);
  take_former_best(context, result);
  if (result.best < unknown_score && !combined.keepall) recheck_trees(context, result.best);
  tell_equal_as_collapsed(drop_equal_by_full_rule(context));
  group_automatically(0, context.trees.ntrees, "xmult");
  if (result.buffer_full)
    emit("\n\nNo space to store more trees! Increase max.trees and retry.\n\n");
  emit(interrupted() || result.buffer_full ? "Search was interrupted...\n" : "Completed search.\n");
  tell_rearrangements(context, true);
  tell_how_sure(context, result);
  keep_best_score(result.best);
  keep_hits(result.hits);
  note_search(xmult_options, {.best = result.best,
                              .score = score_text(context.data, result.best),
                              .hits = result.hits,
                              .replications = result.sets,
                              .trees = context.trees.ntrees,
                              .rearrangements = context.rearrangements.total(),
                              .interrupted = interrupted()});
}

combined_result run_combined() {
  search_session session;
  search_context& context = session.context();
  check_data(context);
  if (combined.consense > 0) collapse_by_swapping(context);
  seed_generator(context.random);
  combined_settings options = combined;
  combined_stages stages{sectors, ratchet, drift, fusing, rebuilding};
  const combined_result result = combined_search(context, options, stages);
  if (combined.chklevel > 0) {  // the effort stays as it became
    combined = options;
    sectors = stages.sectors;
  }
  summarise(context, result);
  return result;
}

void store_consensus(const std::vector<tree_node>& tree) {
  if (tree.empty()) return;
  if (store.ntrees >= store.maxtrees) {
    emit("No space to store the consensus.\n");
    return;
  }
  std::ranges::copy(tree, take_slot().begin());
  report_line("Consensus stored as tree", store.ntrees - 1);
}

}  // namespace

constexpr option_table xmult_options =
    rows.table("xmult", {.unknown = "Unidentified string in xmult options: %s",
                         .wrong_sign = "Wrong search argument: %c"})
        .with_changes([] {
          const xmult_settings now{combined, sectors};
          return options_in_words(combined, sectors, changed_options(now, xmult_options));
        });

void xmult_command() {
  xmult_settings now{combined, sectors};
  option_outcome outcome = read_search_options(now, xmult_options, check_settings);
  combined = now.search;
  sectors = now.sector;
  if (now.runs) outcome = option_outcome::run;
  if (outcome == option_outcome::list)
    list_lines("Extra search settings: ", lines_of_settings(combined));
  if (outcome != option_outcome::run) return;
  require_data("searching");
  const combined_result result = run_combined();
  condense_if_automatic();
  tell_distinct_trees();
  if (combined.consense > 0) store_consensus(result.consensus);
}

}  // namespace zeb
