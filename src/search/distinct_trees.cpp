#include "search/distinct_trees.h"

#include <algorithm>
#include <set>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "engine/collapsing/collapsing.h"
#include "matrix/matrix.h"
#include "search/part_search.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr int strictest_rule = 3;  // "rule 1": what may have no length goes
// Sets of states made by one count: about a second of work. A bound in seconds would make the
// number depend on the machine.
constexpr std::int64_t most_sets = 2'000'000'000;

int trees_looked_at() {
  const std::int64_t sets_of_tree = std::int64_t{matrix.nnodes} * std::max(matrix.nchar, 1);
  return static_cast<int>(std::clamp<std::int64_t>(most_sets / sets_of_tree, 2, store.ntrees));
}

}  // namespace

void tell_distinct_trees() {
  if (interrupts.reason == stop_reason::user || store.ntrees < 2 || part_search.sector) return;
  const int count = trees_looked_at();
  branch_judge judge(strictest_rule);
  std::set<std::vector<tree_node>> distinct;
  for (int t = 0; t < count; ++t) {
    std::vector<tree_node> tree(stored_tree(t).begin(), stored_tree(t).end());
    judge.condense(tree);
    tree.resize(at(node_limit(tree, matrix.ntax)));
    distinct.insert(std::move(tree));
  }
  emit("Trees in memory: ", store.ntrees, ". Distinct when branches that may have no length are ",
       text_of("collapsed%s: %zu.\n",
               count < store.ntrees ? text_of(", of the first %i", count).c_str() : "",
               distinct.size()));
}

}  // namespace zeb
