#include "walking/growing_trees.h"

#include <span>
#include <utility>

#include "base/indices.h"
#include "trees/generated_trees.h"

namespace zeb {
namespace {

constexpr int first_taxa = 3;

// Branches of a tree of so many taxa, the two at its root counted as one.
int branches(int taxa) { return 2 * taxa - 3; }

}  // namespace

growing_trees::growing_trees(std::vector<int> taxa, int ntax)
    : taxa_(std::move(taxa)), ntax_(ntax), choice_(taxa_.size(), 0) {}

bool growing_trees::next(bool deeper) {
  if (placed_ == 0) {
    placed_ = first_taxa;
    return true;
  }
  if (deeper && !complete()) {
    choice_[at(placed_++)] = 0;
    return true;
  }
  for (; placed_ > first_taxa; --placed_) {
    if (++choice_[at(placed_ - 1)] < branches(placed_ - 1)) return true;
  }
  return false;
}

void growing_trees::write(tree_span tree) const {
  tree_of_choices(std::span(taxa_).first(at(placed_)), choice_, tree, ntax_);
}

int growing_trees::taxon_added() const { return placed_ ? taxa_[at(placed_ - 1)] : 0; }

double growing_trees::percent() const {
  double part = 100;
  double sum = 0;
  for (int i = first_taxa; i < placed_; ++i) {
    part /= branches(i);
    sum += part * choice_[at(i)];
  }
  return sum;
}

}  // namespace zeb
