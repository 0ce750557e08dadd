#include "engine/registration.h"

#include "engine/collapsing.h"
#include "engine/packing.h"
#include "engine/tree_scores.h"
#include "shell/arena.h"
#include "trees/tree_equality.h"
#include "trees/tree_groups.h"

namespace zeb {

void register_engine() {
  set_tree_scorer(score_stored_trees);
  set_tree_collapser([](tree_span tree) { condense_by_rule(tree); });
  add_unlock_hook(forget_packed_data);
  register_node_rows();
}

}  // namespace zeb
