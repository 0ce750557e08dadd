// `tfuse`: options, run and summary.
#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/cycle_options.h"
#include "search/drivers/fusing.h"
#include "search/search_journal.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "trees/tree_groups.h"
#include "trees/tree_lists.h"

namespace zeb {
namespace {

constexpr char wrong_option[] = "Wrong option for tree fusing: %i";

constexpr command_options rows = {
    toggle<&fuse_settings::equals>("equals").help("exchange clades also where the score stays"),
    toggle<&fuse_settings::beststart>("beststart").help("begin with the best tree as the target"),
    toggle<&fuse_settings::choose>("choose").help(
        "of the exchanges between two trees make the one that gains most"),
    toggle<&fuse_settings::repeat>("repeat").help(
        "fuse two trees again until they have nothing to exchange"),
    toggle<&fuse_settings::swap>("swap").help("swap what comes of a round by TBR"),
    number<&fuse_settings::minfork>("minfork", {0, 1'000'000}, wrong_option)
        .help("fewest branches of a clade's node in the consensus of the two trees"),
    number<&fuse_settings::rounds>("rounds", {1, 100'000}, wrong_option).help("rounds of fusing"),
    toggle<&fuse_settings::keepall>("keepall").help("keep all trees made, not only better ones"),
    number<&fuse_settings::xroot>("xroot", {0, 100'000}, wrong_option)
        .help("random rootings by which each two trees are compared again; 0: the outgroup only"),
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
  list_lines("Tree-fusing settings:", lines);
}

/// Trees that the command names; all of them where it names none.
std::vector<int> read_pool() {
  const int next = skip_blanks_peek();
  std::vector<int> pool;
  if (next == ';' || next == '=' || next == ':' || store.ntrees == 0) {
    pool.resize(at(store.ntrees));
    std::iota(pool.begin(), pool.end(), 0);
    return pool;
  }
  const std::vector<std::uint8_t> chosen = read_tree_list();
  for (int t = 0; t < store.ntrees; ++t)
    if (chosen[at(t)]) pool.push_back(t);
  return pool;
}

void check_room(const std::vector<int>& pool) {
  if (store.ntrees == 0) error_end("No trees to fuse");
  if (pool.size() < 2) error_end("Fusing a tree with itself produces nothing!");
  const std::int64_t needed = std::int64_t{store.ntrees} + fusing.rounds;
  if (needed <= store.maxtrees) return;
  error_end(text_of("%i fusing rounds with %i trees in memory require max.trees %s or more",
                    fusing.rounds, store.ntrees, std::to_string(needed).c_str()));
}

void fuse_pool(std::vector<int> pool) {
  search_session session;
  search_context& context = session.context();
  begin_reports(context);
  const fuse_result result = fuse_trees(context, fusing, {.slots = std::move(pool)});
  disarm_time_limit();
  double best = best_stored(context, 0);
  report_status(context, best, true);
  filter_by_score(context, best);
  const int equal = drop_equal_by_full_rule(context);
  group_automatically(0, context.trees.ntrees, "tree_fusing");
  if (interrupted()) emit("Search was interrupted...\n");
  emit(text_of("%i rounds of fusing completed.\n", result.rounds));
  emit("Total rearrangements examined: ", rearrangements_text(context.rearrangements), ".\n");
  if (context.constraints_in_force) emit("Constraints enforced during search.\n");
  tell_equal_as_collapsed(equal);
  const std::string score = score_text(context.data, best);
  emit(text_of("%i trees retained, best score %s.\n", context.trees.ntrees, score.c_str()));
  keep_best_score(best);
  note_search(tfuse_options, {.best = best,
                              .score = score,
                              .trees = context.trees.ntrees,
                              .rearrangements = context.rearrangements.total(),
                              .interrupted = interrupted()});
}

}  // namespace

constexpr option_table tfuse_options =
    rows.table("tfuse", {.unknown = "Unidentified string in tree-fusing options: %s",
                         .wrong_sign = "Wrong argument for tree fusing: %c"})
        .with_changes([] { return changed_options(fusing, tfuse_options); });

void tfuse_command() {
  std::vector<int> pool = read_pool();
  const option_outcome outcome = read_search_options(fusing, tfuse_options);
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  require_data("fusing trees");
  check_room(pool);
  fuse_pool(std::move(pool));
  condense_if_automatic();
  tell_distinct_trees();
}

}  // namespace zeb
