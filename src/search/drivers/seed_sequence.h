// The seeds of a search's replications or iterations.
#pragma once

#include <unordered_set>

#include "base/random.h"

namespace zeb {

/// With a step, each is the one before plus the step; else they are drawn, each only once. None is
/// 0.
class seed_sequence {
 public:
  /// Draws the first seed, now and the others later, from `random`.
  seed_sequence(random_generator& random, unsigned step);
  int current() const { return seed_; }
  void advance();

 private:
  unsigned draw() { return static_cast<unsigned>(random_.draw()); }

  random_generator& random_;
  unsigned step_;
  int seed_;
  std::unordered_set<int> used_;
};

}  // namespace zeb
