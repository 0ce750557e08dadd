#include "trees/generated_trees.h"

#include "base/indices.h"
#include "base/random.h"

namespace zeb {

namespace {

/// Builds the tree in which taxon i of the sequence (from the third) joins branch `branch(i)`, a
/// number below 2i - 3: the branch below an earlier taxon, or below the node that one came with.
/// The first taxon hangs on the root, and nothing joins its own branch: the root is on it.
template <class choice>
void build(std::span<const int> taxa, tree_span tree, int ntax, choice branch) {
  const int count = static_cast<int>(taxa.size());
  std::vector<int> up(at(2 * ntax), -1);
  up[at(taxa[0])] = ntax;
  if (count > 1) up[at(taxa[1])] = ntax;
  std::vector<int> branches;
  if (count > 1) branches.push_back(taxa[1]);
  int next = ntax + 1;
  for (int i = 2; i < count; ++i) {
    const int target = branches[at(branch(i))];
    const int joint = next++;
    up[at(joint)] = up[at(target)];
    up[at(target)] = up[at(taxa[at(i)])] = joint;
    branches.push_back(taxa[at(i)]);
    branches.push_back(joint);
  }
  record_from_ancestors(up, tree, ntax);
}

}  // namespace

void random_binary_tree(std::span<const int> taxa, tree_span tree, int ntax) {
  build(taxa, tree, ntax, [](int i) { return draw() % (2 * i - 3); });
}

double binary_tree_count(int taxa) {
  double count = 1;
  for (int n = 4; n <= taxa; ++n) count *= 2.0 * n - 5;
  return count;
}

all_binary_trees::all_binary_trees(std::vector<int> taxa, int ntax)
    : taxa_(std::move(taxa)), ntax_(ntax), choice_(taxa_.size(), 0) {}

bool all_binary_trees::next(tree_span tree) {
  if (!first_) {
    // The last taxa of the sequence move fastest.
    int i = static_cast<int>(taxa_.size()) - 1;
    while (i >= 2 && ++choice_[at(i)] == 2 * i - 3) choice_[at(i--)] = 0;
    if (i < 2) return false;
  }
  first_ = false;
  build(taxa_, tree, ntax_, [this](int i) { return choice_[at(i)]; });
  return true;
}

}  // namespace zeb
