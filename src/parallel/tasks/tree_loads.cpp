#include "parallel/tasks/tree_loads.h"

#include <algorithm>
#include <numeric>

#include "base/indices.h"
#include "engine/plain/tree_scores.h"
#include "matrix/matrix.h"
#include "trees/notation/auto_save.h"
#include "trees/tree_groups.h"
#include "trees/tree_record.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

void add_groups(tree_load& load, std::span<const int> numbers) {
  load.group_words = store.group_words;
  for (const int t : numbers) {
    const std::uint32_t* const row = store.group_rows[at(t)];
    load.memberships.insert(load.memberships.end(), row, row + store.group_words);
  }
  for (int g = 0; g < tree_groups.limit; ++g)
    load.group_names.push_back(tree_group_defined(g) ? tree_groups.names[at(g)] : std::string());
}

void take_groups(const tree_load& load, std::size_t which, int tree) {
  constexpr int word_bits = 32;
  if (load.group_words == 0) return;
  const int count = std::min(tree_groups.limit, static_cast<int>(load.group_names.size()));
  for (int g = 0; g < count; ++g) {
    const std::size_t word = which * at(load.group_words) + at(g / word_bits);
    if (g / word_bits >= load.group_words || word >= load.memberships.size()) return;
    if ((load.memberships[word] >> (g % word_bits) & 1U) == 0) continue;
    if (!tree_group_defined(g)) define_tree_group(g, load.group_names[at(g)]);
    add_to_tree_group(tree, g);
  }
}

}  // namespace

tree_load selected_trees(std::span<const int> numbers, bool with_groups) {
  tree_load load;
  for (const int t : numbers) load.trees.push_back(viewed_tree(t));
  if (with_groups) add_groups(load, numbers);
  return load;
}

tree_load trees_in_memory(bool with_groups) {
  std::vector<int> all(at(store.ntrees));
  std::iota(all.begin(), all.end(), 0);
  return selected_trees(all, with_groups);
}

double score_of_stored_tree(int number) {
  std::vector<double> scores(at(store.ntrees));
  score_stored_trees(scores);
  return scores[at(number)];
}

int store_trees(const tree_load& load, bool may_grow, int* first) {
  if (first) *first = store.ntrees;
  std::vector<std::size_t> fit;
  for (std::size_t i = 0; i < load.trees.size(); ++i)
    if (load.trees[i].size() == at(store.nnodes) &&
        check_tree_record(load.trees[i], matrix.ntax).empty())
      fit.push_back(i);
  if (may_grow && store.vault.maxtrees == 0) make_room_for_trees(fit.size());
  int stored = 0;
  for (const std::size_t i : fit) {
    if (store.ntrees >= store.maxtrees) break;
    const tree_span slot = take_slot();
    std::copy(load.trees[i].begin(), load.trees[i].end(), slot.begin());
    take_groups(load, i, store.ntrees - 1);
    ++stored;
  }
  return stored;
}

}  // namespace zeb
