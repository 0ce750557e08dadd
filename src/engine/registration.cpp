#include "engine/registration.h"

#include <memory>

#include "base/arena.h"
#include "console/output.h"
#include "engine/collapsing/collapsing.h"
#include "engine/fit/weighting_settings.h"
#include "engine/hooks.h"
#include "engine/packing/packed_matrix.h"
#include "engine/plain/tree_scores.h"
#include "engine/wide/cost_vectors.h"
#include "engine/wide/value_ranges.h"
#include "language/methods.h"
#include "matrix/matrix_layout.h"
#include "trees/hooks.h"

namespace zeb {

engine_hooks hooks_of_engine;

void register_engine() {
  hooks_of_trees.score_trees = score_stored_trees;
  hooks_of_trees.collapser = []() -> tree_collapser {
    if (collapsing.rule == 0) return {};
    return [judge = std::make_shared<branch_judge>(collapsing.rule)](tree_span tree) {
      judge->condense(tree);
    };
  };
  add_unlock_hook(forget_packed_data);
  add_new_matrix_hook(forget_character_weighting);
  add_matrix_gone_hook([] {
    if (has_extended_weighting() || !weighting.user_costs.empty())
      emit("Note: weighting function, sets and concavities go with the data.\n");
    forget_character_weighting();
  });
  add_methods(methods_part::choices, []() -> std::vector<std::string> {
    if (collapsing.quick) return {};
    return {"qcollapse -"};
  });
  add_methods(methods_part::choices, weighting_as_commands);
  if (!wide_kinds().empty()) return;
  for (const wide_kind* kind : {&small_cost_vectors, &large_cost_vectors, &value_ranges})
    add_wide_kind(*kind);
}

}  // namespace zeb
