#include "supports/resampling/sibyl.h"

#include <algorithm>

#include "base/arena.h"
#include "base/indices.h"
#include "consensus/counting.h"
#include "consensus/group_tally.h"
#include "matrix/matrix.h"
#include "supports/resampling/group_supports.h"
#include "trees/tree_store.h"

namespace zeb {

last_sibyl_state last_sibyl;

namespace {

/// Numbers of the records of a tree's groups, each once.
std::vector<int> groups_of(group_tally& tally, const_tree_span tree) {
  if (!tally.count_tree_groups(tree, {}, true)) out_of_memory();
  std::vector<int> numbers = tally.records_of_last_tree();
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  if (!numbers.empty() && numbers.front() < 0) numbers.erase(numbers.begin());
  return numbers;
}

}  // namespace

sibyl_result foretold_groups(const replicates& sampled, int reference,
                             const std::vector<std::uint8_t>& left_out) {
  const arena_scope scope;
  group_tally tally(matrix.ntax, left_out);
  for (int t = 0; t < store.ntrees; ++t) {
    poll_trees("Counting groups", at(t), at(store.ntrees));
    groups_of(tally, tree_like_replicates(t, left_out));
  }
  std::vector<int> trees_with;
  for (const group_record& group : tally.groups()) trees_with.push_back(group.count);
  std::vector<int> wanted;
  if (reference >= 0) wanted = groups_of(tally, tree_like_replicates(reference, left_out));

  sibyl_result sums;
  for (const replicate& one : sampled.done) {
    const std::vector<int> found = groups_of(tally, one.tree);
    sums.groups += static_cast<double>(found.size());
    int known = 0;
    for (const int number : found) {
      const int trees = at(number) < trees_with.size() ? trees_with[at(number)] : 0;
      sums.supported += trees == store.ntrees;
      sums.compatible += trees > 0;
      known += std::binary_search(wanted.begin(), wanted.end(), number);
    }
    if (reference < 0) continue;
    sums.wrong += static_cast<double>(found.size()) - known;
    sums.missed += static_cast<double>(wanted.size()) - known;
  }
  for (double* sum : {&sums.groups, &sums.supported, &sums.compatible, &sums.wrong, &sums.missed})
    *sum = share(*sum, static_cast<double>(sampled.done.size()));
  sums.replications = static_cast<int>(sampled.done.size());
  sums.reference_groups = static_cast<double>(wanted.size());
  sums.most_groups = std::max(0, tally.taxa_in_play() - 2);
  return sums;
}

void keep_sibyl(const sibyl_result& r) {
  last_sibyl.values = {share(r.supported, r.groups),
                       share(r.supported, r.most_groups),
                       share(r.compatible, r.groups),
                       share(r.compatible, r.most_groups),
                       share(r.wrong, r.groups),
                       share(r.wrong, r.most_groups),
                       share(r.missed, r.reference_groups),
                       share(r.missed, r.most_groups),
                       r.groups,
                       static_cast<double>(r.replications)};
}

}  // namespace zeb
