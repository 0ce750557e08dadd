#include "engine/registration.h"

#include <memory>

#include "base/arena.h"
#include "engine/collapsing/collapsing.h"
#include "engine/hooks.h"
#include "engine/packing/packed_matrix.h"
#include "engine/plain/tree_scores.h"
#include "trees/tree_equality.h"
#include "trees/tree_groups.h"

namespace zeb {

engine_hooks hooks_of_engine;

void register_engine() {
  set_tree_scorer(score_stored_trees);
  set_collapser_source([]() -> tree_collapser {
    if (collapsing.rule == 0) return {};
    return [judge = std::make_shared<branch_judge>(collapsing.rule)](tree_span tree) {
      judge->condense(tree);
    };
  });
  add_unlock_hook(forget_packed_data);
}

}  // namespace zeb
