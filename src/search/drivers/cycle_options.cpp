#include "search/drivers/cycle_options.h"

#include <algorithm>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "search/search_journal.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "trees/tree_groups.h"

namespace zeb {

void check_cycles(const cycle_settings& wanted) {
  constexpr int fewest = 3;
  if (wanted.fusefreq > 0 && wanted.fusefreq < fewest) error_end(wrong_fusefreq);
}

void add_lines_of_cycles(const cycle_settings& settings, std::string_view rounds,
                         std::vector<std::string>& lines) {
  lines.push_back(settings.equals ? "Alternating with unperturbed cycles"
                                  : "All cycles are perturbed");
  if (settings.autoconst > 0) {
    lines.push_back(text_of("Constraining all cycles but every %i", settings.autoconst));
  }
  if (settings.fusefreq > 0) {
    lines.push_back(text_of("Doing %i %s of fusing, every %i iterations", settings.fuse_rounds,
                            std::string(rounds).c_str(), settings.fusefreq));
    lines.push_back(settings.dumpfuse ? "Discarding suboptimal trees after fusing"
                                      : "Keeping suboptimal trees after fusing");
  }
  if (settings.giveup > 0) {
    lines.push_back(text_of("Stopping when %i%% of perturbation phase completed", settings.giveup));
  }
  if (settings.findscore > 0) {
    lines.push_back("Stopping when score " + exact_text(settings.findscore) + " found");
  }
}

void list_lines(std::string_view title, const std::vector<std::string>& lines) {
  emit(title);
  for (const std::string& line : lines) emit("\n     * ", line);
  emit("\n");
}

cycle_result search_from_first_tree(
    search_context& context, std::string_view name,
    const std::function<cycle_result(search_context& context, const cycle_task& task)>& search) {
  seed_generator(context.random);
  begin_reports(context);
  fetch_tree(context, slot_tree(context, 0));
  cycle_result result = search(context, {.first_slot = 0, .counts_cycles = true, .fuse = fusing});
  disarm_time_limit();
  result.best = std::min(result.best, best_stored(context, 0));
  report_status(context, result.best, true);
  recheck_trees(context, result.best);
  tell_equal_as_collapsed(drop_equal_by_full_rule(context));
  group_automatically(0, context.trees.ntrees, name);
  return result;
}

namespace {

double worst_stored(const search_context& context) {
  double worst = no_score;
  for (int t = 0; t < context.trees.ntrees; ++t) {
    worst = std::max(worst, context.records.of_slot[static_cast<std::size_t>(t)].score);
  }
  return worst;
}

}  // namespace

void tell_cycles(const search_context& context, const cycle_result& result, const char* name,
                 const option_table& table, const cycle_settings& wanted) {
  if (interrupted()) emit("Search was interrupted...\n");
  emit(text_of("%i %s iterations completed", result.cycles, name),
       wanted.autoconst > 0 ? " (autoconstrained)" : "", ".\n");
  tell_rearrangements(context, false);
  const std::string best = score_text(context.data, result.best);
  const std::string worst = score_text(context.data, worst_stored(context));
  emit(text_of("Saved %i trees of score %s", context.trees.ntrees, best.c_str()));
  if (worst != best) emit("-", worst);
  emit("\n");
  keep_best_score(result.best);
  note_search(table, {.best = result.best,
                      .score = best,
                      .trees = context.trees.ntrees,
                      .rearrangements = context.rearrangements.total(),
                      .interrupted = interrupted()});
}

}  // namespace zeb
