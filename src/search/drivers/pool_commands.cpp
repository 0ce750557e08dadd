#include "search/drivers/pool_commands.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <numeric>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "language/lexer.h"
#include "search/breaking_trees.h"
#include "search/search_journal.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "trees/tree_groups.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {

bool names_trees(int next) { return std::isalnum(next) != 0 || next == '{' || next == '.'; }

std::vector<int> read_pool() {
  std::vector<int> pool;
  if (!names_trees(skip_blanks_peek())) {
    pool.resize(at(store.ntrees));
    std::iota(pool.begin(), pool.end(), 0);
    return pool;
  }
  if (store.ntrees == 0) error_end("No trees to fuse");
  const std::vector<std::uint8_t> chosen = read_tree_list();
  for (int t = 0; t < store.ntrees; ++t)
    if (chosen[at(t)]) pool.push_back(t);
  return pool;
}

namespace {

void read_count(int* target, int lowest) {
  int value = 0;
  if (!read_optional_int(&value)) return;
  if (value < lowest || value > 1'000'000) error_end("Wrong option for tree fusing:", value);
  *target = value;
}

}  // namespace

void read_hybrid_numbers(hybrid_settings& settings) {
  read_count(&settings.pairings, 1);
  if (accept_char('*')) read_count(&settings.rounds, 1);
  if (accept_char('/')) read_count(&settings.sample, 0);
}

std::string hybrid_numbers(const hybrid_settings& settings) {
  return text_of("%i*%i/%i", settings.pairings, settings.rounds, settings.sample);
}

void add_lines_of_hybrids(const hybrid_settings& settings, std::vector<std::string>& lines) {
  lines.push_back(text_of("%i rounds of %i hybridizations", settings.rounds, settings.pairings));
  lines.push_back(settings.sample > 0
                      ? text_of("The best %i trees go to the next round", settings.sample)
                      : "As many trees as at the start go to the next round");
  if (settings.autostop > 0)
    lines.push_back(text_of("Stopping after %i rounds without improvement", settings.autostop));
  lines.emplace_back(settings.replace ? "Better hybrids replace their source tree"
                                      : "Better hybrids are added to the trees");
  if (settings.clog > 0)
    lines.push_back(
        text_of("Retaining the best trees once there are %i times as many more", settings.clog));
}

void check_room_for_hybrids(const hybrid_settings& settings, const std::vector<int>& pool) {
  const std::int64_t made = settings.pairings;
  const std::int64_t allowed = static_cast<std::int64_t>(pool.size()) * settings.clog;
  if (store.ntrees >= store.maxtrees) {
    error_end(
        text_of("Can't run hybridization on %i trees with max.trees=%i.\n"
                "Increase max. trees and retry...",
                store.ntrees, store.maxtrees));
  }
  if (settings.clog == 0 && store.ntrees + made > store.maxtrees) {
    error_end(
        text_of("%i rounds of %i hybridizations with %i trees in memory requires max.trees %s"
                " or more",
                settings.rounds, settings.pairings, store.ntrees,
                std::to_string(store.ntrees + made).c_str()));
  }
  if (settings.clog > 0 && store.ntrees + std::min(made, allowed + 1) > store.maxtrees) {
    warning(
        text_of("%i rounds of %i hybridizations with %i trees (max. %i) may overflow "
                "tree-buffer",
                settings.rounds, settings.pairings, store.ntrees, store.maxtrees));
  }
}

void close_pool_search(search_context& context, std::string_view group, const std::string& done,
                       const option_table& table) {
  disarm_time_limit();
  const bool all_break = context.trees.ntrees > 0 && lift_handicaps(context);
  const double best = best_stored(context, 0);
  report_status(context, best, true);
  recheck_trees(context, best);
  const int equal = drop_equal_by_full_rule(context);
  group_automatically(0, context.trees.ntrees, group);
  if (interrupted()) emit("Search was interrupted...\n");
  emit(done, "\n");
  emit("Total rearrangements examined: ", rearrangements_text(context.rearrangements), ".\n");
  if (context.constraints_in_force) emit("Constraints enforced during search.\n");
  if (all_break) emit("Note: no tree that fulfils the constraints was found.\n");
  tell_equal_as_collapsed(equal);
  const std::string score = score_text(context.data, best);
  emit(text_of("%i trees retained, best score %s.\n", context.trees.ntrees, score.c_str()));
  keep_best_score(best);
  note_search(table, {.best = best,
                      .score = score,
                      .trees = context.trees.ntrees,
                      .rearrangements = context.rearrangements.total(),
                      .interrupted = interrupted()});
}

}  // namespace zeb
