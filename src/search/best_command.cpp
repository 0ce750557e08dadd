// `best`: the trees in memory that score best.
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/scores.h"
#include "console/output.h"
#include "engine/plain/tree_scores.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "search/commands.h"
#include "search/search_settings.h"
#include "trees/constraints/constraint_test.h"
#include "trees/tree_store.h"

namespace zeb {

/// "best": keeps the trees that are no worse than the best one by more than the limit of `subopt`;
/// "best N": by more than N. From "[" on, only those that fulfil the constraints, until "]".
void best_command() {
  require_data("comparing scores");
  if (accept_char(']')) {
    expect_end();
    set_best_by_constraints(false);
    return;
  }
  require_trees();
  const bool constrained = accept_char('[') || search_settings.best_by_constraints;
  double allowed = search_settings.suboptimal;
  if (read_optional_float(&allowed) && allowed < 0)
    error_end("The difference to the best score can't be negative");
  check_end();
  if (constrained) require_constraints();
  set_best_by_constraints(constrained);
  const int decimals = score_decimals(have_fractions(scored_characters()));
  const score_kind kind = decimals > 0 ? score_kind::fractional : score_kind::whole;
  std::vector<std::uint8_t> keep(at(store.ntrees), 1);
  const char* note = constrained ? keep_fulfilling(keep) : "";
  std::vector<double> scores(at(store.ntrees));
  score_stored_trees(scores);
  double best = -1;
  for (std::size_t t = 0; t < scores.size(); ++t)
    if (keep[t] && (best < 0 || scores[t] < best)) best = scores[t];
  for (std::size_t t = 0; t < scores.size(); ++t)
    keep[t] = keep[t] && is_within_bound(scores[t], best + allowed, kind);
  const int before = store.ntrees;
  select_trees(store, keep);
  emit("Best score: ", text_of("%.*f", decimals, best), ", ", before - store.ntrees,
       " trees discarded, ", store.ntrees, " trees retained", note, "\n");
}

}  // namespace zeb
