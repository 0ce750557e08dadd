// `sectsch`: options, run and summary.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/cycle_options.h"
#include "search/part_search.h"
#include "search/search_journal.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/sectors/sector_center.h"
#include "search/sectors/sector_choice.h"
#include "search/sectors/sector_listing.h"
#include "search/sectors/sector_option_forms.h"
#include "search/sectors/sectors.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "trees/constraints/constraints.h"
#include "trees/tree_groups.h"

namespace zeb {
namespace {

constexpr auto each = &sector_settings::each;

void switch_globals_off(sector_settings& settings) { settings.global = settings.dglobal = 0; }

constexpr command_options rows = {
    choice<&sector_settings::selection>("rss", sector_settings::random)
        .help("sectors drawn at random"),
    choice<&sector_settings::selection>("css", sector_settings::constrained)
        .help("sectors by the groups of the constraint tree in force"),
    form<read_exclusive>("xss").help(
        "N (or N to M) sectors that have nothing in common, in R rounds; TBR on the whole tree "
        "every G rounds"),
    form<read_around>("dss").help("nodes within D branches around node N of a single tree"),
    toggle<&sector_settings::xeven>("xeven").help("sectors of xss are as even as possible"),
    toggle<&sector_settings::chkroot>("chkroot").help(
        "xss searches what holds the base of the tree, however small"),
    number<&sector_settings::minsize>("minsize", {5, 1'000'000},
                                      "Give min. size of random sectors (5 or more)")
        .help("terminals of the smallest sectors of rss"),
    number<&sector_settings::maxsize>("maxsize", {5, 1'000'000}, "Give max. size of random sectors")
        .help("terminals of the largest"),
    number<&sector_settings::minfork>("minfork", {2, 1'000'000},
                                      "Give min. fork of constraint sectors (min.=2)")
        .help("branches of the smallest fork that css searches"),
    number<&sector_settings::maxfork>("maxfork", {5, 1'000'000},
                                      "Give max. size of constraint sectors (min.=5)")
        .help("branches of the largest"),
    number<&sector_settings::css_rounds>(
        "rounds", {0, 10'000}, "Give number of rounds to do (for constraint based selections)")
        .help("times that css goes through the groups"),
    number<&sector_settings::increase>("increase", {0, 100},
                                       "Give factor to increase random sector size (0-100)")
        .help("per cent by which the size grows"),
    form<read_selections>("selfactor")
        .help("sectors of size S drawn for T taxa are T*100/(S*N); \"= X Y ...\": as many as told, "
              "size by size"),
    number<&sector_settings::moveon>("moveon", {0, 1'000'000},
                                     "Give max. number of failures to move on")
        .no()
        .help("go to the next size after N sectors that brought nothing"),
    number<&sector_settings::global>("global", {1, 1'000'000}, "Give frequency of global TBR")
        .help("TBR on the whole tree after N changes by sectors smaller than godrift"),
    number<&sector_settings::dglobal>("dglobal", {1, 1'000'000}, "Give frequency of global TBR")
        .help("likewise by larger ones"),
    form<switch_globals_off>("noglobal").help("neither"),
    toggle<each, &sector_search_settings::equals>("equals").help(
        "equally good arrangements take the place of what is there"),
    optional_number<each, &sector_search_settings::fuse>(
        "fuse", 1, {0, 99}, "Number of fuses for starts must be 0 - 99")
        .no()
        .help("fuse the starts of small sectors, N rounds"),
    number<each, &sector_search_settings::godrift>("godrift", {3, 1'000'000},
                                                   "Give size of sectors to analyze with "
                                                   "tree-drifting")
        .help("sectors of so many terminals are drifted"),
    number<each, &sector_search_settings::drift>("drift", {0, 100'000},
                                                 "Give number of drift iterations to do")
        .help("cycles of drifting for those"),
    number<each, &sector_search_settings::gocomb>("gocomb", {3, 1'000'000},
                                                  "Give size of sectors to analyze with combined "
                                                  "algorithms")
        .no()
        .help("sectors of so many terminals get several starts that are drifted and fused"),
    number<each, &sector_search_settings::starts>("starts", {1, 1000},
                                                  "Give num. of starts for small sectors")
        .help("replications of building and TBR for small sectors"),
    number<each, &sector_search_settings::combstarts>("combstarts", {1, 1000},
                                                      "Give num. of starts for large sectors")
        .help("starts for those of gocomb"),
    real<&sector_settings::findscore>("findscore", {0, 4294967295.0}, "Give score to stop at")
        .no()
        .help("stop when a score of X or better is found"),
    form<read_instructions>("[")
        .argument("commands]")
        .help("run with the sector as the data and its tree in memory"),
    toggle<each, &sector_search_settings::track>("track").help(
        "instructions can ask for nodes of the whole tree (biginsect, nodtosect); for one tree"),
    form<read_recursion>("recurse").help(
        "levels of sectors within sectors; set with \":\", increased before data are read"),
    toggle<each, &sector_search_settings::safesank>("safesank")
        .help("strict test of characters with costs before sectors drop them (all are kept either "
              "way)"),
    form<read_slack>("slack").help("per cent of extra memory for each sector; set with \":\""),
    form<use_private_buffer>("xbuffer").help(
        "sectors are searched beside the whole tree, which stays as it is; set with \":\""),
    form<use_no_private_buffer>("noxbuffer")
        .help("the whole tree is optimised anew after each sector; set with \":\""),
    toggle<&sector_settings::keepall>("keepall").help("keep all trees, not only the best"),
    number<&sector_settings::tree>("tree", {0, 1'000'000}, "Give number of the tree")
        .no(-1)
        .help("search tree N only; notree: all"),
};

[[noreturn]] void refuse_level(int most) {
  error_end(
      text_of("Can't recurse sectorial searches more than %i levels\n"
              "Maximum level of recursion must be set BEFORE reading data",
              most));
}

constexpr int fewest_nodes_of_chunk = 10;

void check_divisions(const sector_settings& wanted) {
  if (!wanted.divisions_given || !matrix.present) return;
  const int most = (2 * active_taxa() - 1) / fewest_nodes_of_chunk;
  if (most < 2) error_end("Tree must be divided in at least 2 chunks");
  if (std::max(wanted.divisions, wanted.divisions_last) <= most) return;
  error_end(
      text_of("Can't divide tree in chunks of less than %i nodes\n"
              "Can't divide in more than %i parts",
              fewest_nodes_of_chunk, most));
}

/// Within a sector what is left of the user's constraints is in force.
void check_constraints() {
  if (part_search.sector) return;
  if (!constraints.active) error_end("Constraint-based sectorial searches require constraints ON");
  if (constraints.tree.empty())
    error_end("Can't run constrained sectorial searches without tree constraints");
}

void check_recursion(const sector_settings& wanted) {
  if (matrix.present && wanted.each.recurse > sectors.each.recurse)
    error_end(
        "The level of recursion for sectorial searches\n"
        "cannot be increased after reading data...");
  if (static_cast<int>(wanted.each.instructions.size()) > wanted.each.recurse)
    refuse_level(wanted.each.recurse);
}

/// "track" is for one run.
void check_tracking(const sector_settings& wanted) {
  if (!wanted.each.track) return;
  if (part_search.level > 0)
    error_end("The \"tracking\" option can only be set at the first level of recursion");
  const std::vector<std::string>& instructions = wanted.each.instructions;
  if (instructions.empty() || instructions.front().empty())
    error_end("The \"track\" option requires user-instructions for each sector...");
  if (wanted.tree < 0 && store.ntrees > 1)
    error_end("The \"track\" option works only for a single tree: \"sectsch = track tree...\"");
}

void check_center(const sector_settings& wanted) {
  if (wanted.tree < 0 && store.ntrees != 1) error_end("DSS requires that a single tree be named");
  if (store.ntrees > 0) check_node_number(std::max(0, wanted.tree), wanted.center);
}

void check_settings(sector_settings& wanted, option_outcome outcome) {
  check_recursion(wanted);
  const std::string fixed_by_run = std::exchange(wanted.fixed_by_run, "");
  wanted.brackets = 0;
  if (outcome != option_outcome::run) return;
  if (!fixed_by_run.empty()) error_end(fixed_by_run);
  if (store.ntrees > 0 && wanted.tree >= store.ntrees) error_end("There is no tree", wanted.tree);
  check_tracking(wanted);
  if (wanted.selection == sector_settings::random && wanted.minsize > wanted.maxsize)
    error_end(
        text_of("Min. size (set as %i) must be greater than or equal to max. size (set as %i)",
                wanted.minsize, wanted.maxsize));
  if (wanted.selection == sector_settings::around) check_center(wanted);
  if (wanted.selection == sector_settings::exclusive) check_divisions(wanted);
  if (wanted.selection == sector_settings::constrained) check_constraints();
}

/// The settings with the center of dss as the search numbers it.
sector_settings settings_for(const search_context& context, const std::vector<int>& around) {
  sector_settings how = sectors;
  const auto number = [&](std::size_t i) { return context.data.taxon_to_pack[at(around[i])]; };
  if (around.size() >= 3)
    how.center =
        node_between(context.working_tree, context.data.n, number(0), number(1), number(2));
  else if (!around.empty())
    how.center = number(0);
  return how;
}

/// Trees that become the same as another one go.
void search_stored_trees(search_context& context, const std::vector<int>& around) {
  const int count = context.trees.ntrees;
  std::vector<std::uint8_t> keep(at(count), 1);
  for (int t = 0; t < count && !interrupted(); ++t) {
    if (sectors.tree >= 0 && t != sectors.tree) continue;
    context.shown.current_tree = t;
    fetch_tree(context, slot_tree(context, t));
    const double before = record_of(context, t).score;
    const double score =
        search_sectors(context, context.working_tree, settings_for(context, around));
    if (score < before || sectors.each.equals)
      keep[at(t)] = replace_tree(context, context.working_tree, t, score) || score >= before;
    if (settings.status_trees > 0 && (t + 1) % settings.status_trees == 0)
      report_status(context, score, true);
  }
  keep_trees(context, keep);
}

char letter_of_selection() {
  switch (sectors.selection) {
    case sector_settings::exclusive:
      return 'X';
    case sector_settings::constrained:
      return 'C';
    case sector_settings::around:
      return 'D';
    default:
      return 'R';
  }
}

/// What dss goes around; else nothing.
std::vector<int> center_of_search() {
  if (sectors.selection != sector_settings::around) return {};
  return taxa_around(stored_tree(std::max(0, sectors.tree)), sectors.center);
}

void run_sectors() {
  const std::vector<int> around = center_of_search();
  search_session session;
  search_context& context = session.context();
  tell_limit_of_sectors(context, sectors);
  seed_generator(context.random);
  begin_reports(context);
  search_stored_trees(context, around);
  disarm_time_limit();
  const double best = best_stored(context, 0);
  report_status(context, best, true);
  if (!sectors.keepall) {
    recheck_trees(context, best);
    tell_equal_as_collapsed(drop_equal_by_full_rule(context));
  }
  group_automatically(0, context.trees.ntrees, "sect_sch");
  if (interrupted()) emit("Search was interrupted...\n");
  const std::string score = score_text(context.data, best);
  emit(text_of("Sectorial search (%cSS), best score: %s.\n", letter_of_selection(), score.c_str()));
  emit("Total rearrangements examined: ", rearrangements_text(context.rearrangements), ".\n");
  if (context.constraints_in_force) emit("Constraints enforced during search.\n");
  keep_best_score(best);
  note_search(sectsch_options, {.best = best,
                                .score = score,
                                .trees = context.trees.ntrees,
                                .rearrangements = context.rearrangements.total(),
                                .interrupted = interrupted()});
}

std::string changed_settings_of_sectors() {
  sector_settings told = sectors;
  std::string text;
  if (told.global == 0 || told.dglobal == 0) {
    text = "noglobal ";
    if (told.global > 0) text += text_of("global %i ", told.global);
    if (told.dglobal > 0) text += text_of("dglobal %i ", told.dglobal);
    const sector_settings standard;
    told.global = standard.global;
    told.dglobal = standard.dglobal;
  }
  const std::string forms = changed_forms(sectors);
  text += forms + (forms.empty() ? "" : " ") + changed_options(told, sectsch_options);
  if (text.ends_with(' ')) text.pop_back();
  return text;
}

}  // namespace

constexpr option_table sectsch_options =
    rows.table("sectsch", {.unknown = "Unidentified string in sectorial search options: %s",
                           .wrong_sign = "Wrong argument for sectorial search: %c"})
        .with_changes(changed_settings_of_sectors);

void sectsch_command() {
  const option_outcome outcome = read_search_options(sectors, sectsch_options, check_settings);
  if (outcome == option_outcome::list) list_sector_settings();
  if (outcome != option_outcome::run) return;
  require_data("sectorial searches");
  if (part_search.level >= sectors.each.recurse && part_search.level > 0)
    refuse_level(sectors.each.recurse);
  if (store.ntrees == 0) error_end("No trees for sectorial searches");
  run_sectors();
  condense_if_automatic();
  tell_distinct_trees();
}

}  // namespace zeb
