// `tfuse`: options, run and summary.
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/options.h"
#include "search/breaking_trees.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/cycle_options.h"
#include "search/drivers/fusing.h"
#include "search/drivers/pool_commands.h"
#include "search/search_report.h"
#include "search/search_session.h"
#include "search/store/filter.h"

namespace zeb {
namespace {

void read_hybridize(fuse_settings& settings) {
  read_hybrid_numbers(settings.hybrid);
  settings.hybridize = true;
}

constexpr auto picktype_option() {
  constexpr double standard_threshold = 1.5;
  auto option = optional_real<&fuse_settings::picktype>("picktype", {0, 100},
                                                        "Wrong option for tree fusing: %i");
  option.row.keeps_without = false;
  option.row.without = standard_threshold;
  return option.no();
}

constexpr command_options rows = {
    toggle<&fuse_settings::equals>("equals").help("exchange clades also where the score stays"),
    toggle<&fuse_settings::beststart>("beststart").help("begin with the best tree as the target"),
    toggle<&fuse_settings::choose>("choose").help(
        "of the exchanges between two trees make the one that gains most"),
    toggle<&fuse_settings::repeat>("repeat").help(
        "fuse two trees again until they have nothing to exchange"),
    toggle<&fuse_settings::swap>("swap").help("swap what comes of a round by TBR"),
    number<&fuse_settings::minfork>("minfork", {0, 1'000'000}, wrong_pool_option)
        .help("fewest branches of a clade's node in the consensus of the two trees"),
    number<&fuse_settings::rounds>("rounds", {1, 100'000}, wrong_pool_option)
        .help("rounds of fusing"),
    toggle<&fuse_settings::keepall>("keepall").help("keep all trees made, not only better ones"),
    number<&fuse_settings::xroot>("xroot", {0, 100'000}, wrong_pool_option)
        .help("random rootings by which each two trees are compared again; 0: the outgroup only"),
    form<read_hybridize>("hybridize")
        .no()
        .also<&fuse_settings::hybridize>(0)
        .argument(hybrid_numbers_argument)
        .help(
            "hybridise in place of fusing, as \"hybrid\" does: N pairs of trees (1000) in each of "
            "R rounds (1), from which the best S trees (50) go to the next; with S 0 as many as "
            "at the start [off]"),
    autostop_option<&fuse_settings::hybrid>(),
    replace_option<&fuse_settings::hybrid>(),
    clog_option<&fuse_settings::hybrid>(),
    picktype_option().help("hybridise where trees could exchange less than X per cent of their "
                           "groups, 1.5 without a number; else fuse"),
};

void list_settings() {
  std::vector<std::string> lines = {
      text_of("%i rounds of fusing", fusing.rounds),
      fusing.equals ? "Accepting exchanges of equal score" : "Accepting better exchanges only",
      fusing.beststart ? "Starting from the best tree" : "Starting from a random tree",
      fusing.choose ? "Choosing the best exchange for each pair"
                    : "Making every exchange that improves the tree",
      text_of("Clades with less than %i branches in the consensus are left out", fusing.minfork),
      fusing.swap ? "TBR-swapping the trees produced" : "Trees produced are not swapped",
      fusing.keepall ? "Keeping all trees" : "Keeping better trees only",
  };
  if (fusing.repeat) lines.emplace_back("Fusing each pair until nothing improves");
  if (fusing.xroot > 0) lines.push_back(text_of("Trying %i random rootings", fusing.xroot));
  if (fusing.picktype > 0) {
    lines.push_back(
        text_of("Selecting fusing or hybridization automatically (%.3f)", fusing.picktype));
  } else if (fusing.hybridize) {
    lines.emplace_back("Hybridizing in place of fusing");
  }
  if (fusing.picktype > 0 || fusing.hybridize) add_lines_of_hybrids(fusing.hybrid, lines);
  list_lines("Tree-fusing settings:", lines);
}

void check_room_for_rounds() {
  const std::int64_t needed = std::int64_t{store.ntrees} + fusing.rounds;
  if (needed <= store.maxtrees) return;
  error_end(text_of("%i fusing rounds with %i trees in memory require max.trees %s or more",
                    fusing.rounds, store.ntrees, std::to_string(needed).c_str()));
}

void check_pool(const std::vector<int>& pool) {
  if (store.ntrees == 0) error_end("No trees to fuse");
  if (pool.size() < 2) error_end("Fusing a tree with itself produces nothing!");
  if (fusing.picktype > 0 || !fusing.hybridize) check_room_for_rounds();
  if (fusing.picktype > 0 || fusing.hybridize) check_room_for_hybrids(fusing.hybrid, pool);
}

bool is_to_hybridize(const search_context& context, const std::vector<int>& pool) {
  if (fusing.picktype <= 0) return fusing.hybridize;
  const double score = exchange_score(context, pool, fusing.minfork);
  const bool hybridizes = score < fusing.picktype;
  emit(hybridizes ? "NOTE: picking hybridization algorithm" : "NOTE: Picking tree-fusing algorithm",
       text_of(" (score %.3f)\n", score));
  return hybridizes;
}

void fuse_pool(std::vector<int> pool) {
  search_session session;
  search_context& context = session.context();
  const bool hybridizes = is_to_hybridize(context, pool);
  handicap_breaking_trees(context);
  begin_reports(context);
  if (hybridizes) {
    const hybrid_result result =
        hybridize_trees(context, fusing.hybrid, {.slots = std::move(pool)});
    close_pool_search(context, "hybrid",
                      text_of("%i rounds of hybridization completed.", result.rounds),
                      tfuse_options);
  } else {
    const fuse_result result = fuse_trees(context, fusing, {.slots = std::move(pool)});
    close_pool_search(context, "tree_fusing",
                      text_of("%i rounds of fusing completed.", result.rounds), tfuse_options);
  }
}

}  // namespace

constexpr option_table tfuse_options =
    rows.table("tfuse", {.unknown = "Unidentified string in tree-fusing options: %s",
                         .wrong_sign = "Wrong argument for tree fusing: %c"})
        .with_changes([] {
          std::string text = changed_options(fusing, tfuse_options);
          if (fusing.hybridize)
            text += (text.empty() ? "hybridize " : " hybridize ") + hybrid_numbers(fusing.hybrid);
          return text;
        });

void tfuse_command() {
  std::vector<int> pool = read_pool();
  const option_outcome outcome = read_search_options(fusing, tfuse_options);
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  require_data("fusing trees");
  check_pool(pool);
  fuse_pool(std::move(pool));
  condense_if_automatic();
  tell_distinct_trees();
}

}  // namespace zeb
