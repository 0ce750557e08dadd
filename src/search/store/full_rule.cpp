#include "search/store/full_rule.h"

#include <set>
#include <vector>

#include "engine/collapsing/collapsing.h"
#include "search/search_report.h"
#include "search/search_session.h"
#include "search/store/stored_trees.h"
#include "trees/tree_store.h"

namespace zeb {

int drop_equal_by_full_rule() {
  if (collapsing.rule < 4 || store.ntrees < 2) return 0;
  // Rules that swap count their moves among those of the search.
  const rearrangement_counter examined = searching.rearrangement_count;
  const std::size_t nodes = stored_tree(0).size();
  std::vector<std::uint8_t> keep(static_cast<std::size_t>(store.ntrees), 1);
  std::set<std::vector<std::int32_t>> known;
  branch_judge judge(collapsing.rule);
  const bool ended_early = interrupted();
  for (int t = 0; t < store.ntrees; ++t) {
    report_status_best();
    if (interrupted() && !ended_early) break;
    std::vector<std::int32_t> tree(nodes);
    matrix_form(t, tree);
    judge.condense(tree);
    keep[static_cast<std::size_t>(t)] = known.insert(std::move(tree)).second;
  }
  searching.rearrangement_count = examined;
  const int before = store.ntrees;
  keep_trees(keep);
  return before - store.ntrees;
}

void condense_if_automatic() {
  if (!collapsing.automatic || collapsing.rule == 0) return;
  branch_judge judge(collapsing.rule);
  for (int t = 0; t < store.ntrees; ++t) judge.condense(stored_tree(t));
}

}  // namespace zeb
