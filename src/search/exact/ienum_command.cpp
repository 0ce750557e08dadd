// `ienum`: options, run and summary of the exact search.
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
#include "search/exact/implicit_enumeration.h"
#include "search/search_journal.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "trees/tree_store.h"
#include "trees/tree_undo.h"

namespace zeb {
namespace {

constexpr command_options rows = {
    choice<&exact_settings::sample>("&", 1).help(
        "when the memory for trees is full, go on, and keep a random sample of the best trees"),
    choice<&exact_settings::look_ahead>("-", 0).help(
        "bounds don't count what taxa to come are sure to add: slower"),
    choice<&exact_settings::keep_places>("!", 0).help(
        "try all branches for each taxon at each step, not only those left open by the step "
        "before: slower"),
};

exact_settings read_settings() {
  exact_settings how;
  while (skip_blanks_peek() != ';') {
    if (!read_sign(how, ienum_options))
      error_end_f("Wrong argument: %c", static_cast<char>(skip_blanks_peek()));
  }
  check_end();
  return how;
}

void check_sampling(const search_rules& rules) {
  if (rules.suboptimal > 0)
    error_end("A sample can be taken only for optimal trees (set suboptimal to 0)");
  if (rules.collapse.rule > 0)
    error_end("A sample can be taken only for uncollapsed trees (set collapse to \"none\")");
}

void summarise(const search_context& context, const exact_settings& how,
               const exact_result& result) {
  if (interrupted()) {
    if (result.percent >= 0)
      emit(text_of("NOTE: implicit enumeration completed only %i%% of total work...\n",
                   result.percent));
    else
      emit("Search was interrupted...\n");
  }
  if (context.constraints_in_force) emit("Constraints enforced during search.\n");
  if (context.rules.collapse.rule > 2 && context.rules.suboptimal > 0)
    emit("Note: some trees of different length may become identical if collapsed.\n");
  emit(text_of("Implicit enumeration, %i trees found, score %s", context.trees.ntrees,
               score_text(context.data, result.best).c_str()));
  if (context.rules.suboptimal > 1e-9)
    emit("-", score_text(context.data, result.best + context.rules.suboptimal));
  if (how.sample && result.seen > context.trees.maxtrees)
    emit(" (sampled from ", result.seen, " trees)");
  if (result.overflowed) emit(" (overflow)");
  emit("\n");
}

/// Returns whether the result is complete.
bool search_all(const exact_settings& how) {
  search_session session;
  search_context& context = session.context();
  seed_generator(context.random);
  const exact_result result = find_all_best_trees(context, how);
  disarm_time_limit();
  const bool sampled = how.sample && result.seen > store.maxtrees;
  note_full_buffer(result.overflowed || sampled);
  if (store.ntrees > 0) filter_by_score(context, result.best);
  tell_equal_as_collapsed(drop_equal_by_full_rule(context));
  summarise(context, how, result);
  keep_best_score(result.best);
  note_search(ienum_options, {.best = result.best,
                              .score = score_text(context.data, result.best),
                              .trees = context.trees.ntrees,
                              .interrupted = interrupted()});
  return !interrupted() && !result.overflowed && !sampled;
}

/// The trees of before go when others have been found, or none can be.
bool enumerate_trees(const exact_settings& how) {
  tree_undo former(std::vector<std::uint8_t>(at(store.ntrees), 1));
  set_tree_count(store, 0);
  try {
    const bool complete = search_all(how);
    former.keep();
    return complete;
  } catch (...) {
    if (store.ntrees > 0) former.keep();
    throw;
  }
}

}  // namespace

constexpr option_table ienum_options = rows.table("ienum", {});

void ienum_command() {
  const exact_settings how = read_settings();
  require_data("searching");
  if (how.sample) check_sampling(rules_in_force());
  keep_exactness(enumerate_trees(how));
  condense_if_automatic();
  tell_distinct_trees();
}

}  // namespace zeb
