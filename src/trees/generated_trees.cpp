#include "trees/generated_trees.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "base/random.h"
#include "matrix/matrix.h"

namespace zeb {

namespace {

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

std::vector<int> taxa_of_generated_trees() {
  std::vector<int> taxa;
  for (int t = 0; t < matrix.ntax; ++t) {
    if (matrix.taxon_active[at(t)]) taxa.push_back(t);
  }
  if (taxa.size() < 3) error_end("At least three taxa must be active");
  const auto outgroup = std::find(taxa.begin(), taxa.end(), matrix.outgroup);
  if (outgroup != taxa.end()) std::rotate(taxa.begin(), outgroup, outgroup + 1);
  return taxa;
}

void tree_of_choices(std::span<const int> taxa, std::span<const int> branches, tree_span tree,
                     int ntax) {
  build(taxa, tree, ntax, [branches](int i) { return branches[at(i)]; });
}

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
