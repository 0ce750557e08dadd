#include "search/breaking_trees.h"

#include <algorithm>

#include "base/indices.h"
#include "engine/passes/links.h"
#include "search/moves/search_constraints.h"
#include "search/store/stored_trees.h"

namespace zeb {

std::vector<std::uint8_t> breaking_trees(search_context& context) {
  std::vector<std::uint8_t> breaking(at(context.trees.ntrees), 0);
  for (int t = 0; t < context.trees.ntrees; ++t) {
    fetch_tree(context, slot_tree(context, t));
    std::copy(context.working_tree.begin(), context.working_tree.end(),
              context.data.tree.anc.begin());
    rebuild_links(context.data);
    breaking[at(t)] = !context.constraints_in_force->obeyed(context.data);
  }
  return breaking;
}

void handicap_breaking_trees(search_context& context) {
  if (!context.constraints_in_force) return;
  const std::vector<std::uint8_t> breaking = breaking_trees(context);
  for (int t = 0; t < context.trees.ntrees; ++t)
    if (breaking[at(t)]) record_of(context, t).score += breaking_handicap;
}

bool lift_handicaps(search_context& context) {
  for (int t = 0; t < context.trees.ntrees; ++t)
    if (record_of(context, t).score < breaking_handicap) return false;
  for (int t = 0; t < context.trees.ntrees; ++t) record_of(context, t).score -= breaking_handicap;
  return true;
}

}  // namespace zeb
