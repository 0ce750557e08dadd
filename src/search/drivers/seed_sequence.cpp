#include "search/drivers/seed_sequence.h"

#include <algorithm>

namespace zeb {

seed_sequence::seed_sequence(random_generator& random, unsigned step)
    : random_(random), step_(step), seed_(std::max(random.draw(), 1)) {}

void seed_sequence::advance() {
  used_.insert(seed_);
  if (step_ != 0) {
    const auto next = static_cast<unsigned>(seed_) + step_;
    seed_ = std::max(1, static_cast<int>(next & 0x7fffffffU));
    return;
  }
  auto next = draw();
  while (used_.contains(static_cast<int>(next)) || next == 0) {
    unsigned divisor = 0;
    while (divisor == 0) divisor = draw();
    next = draw() * next / divisor;
    if (next == 0) next = 1;
    next &= 0x7fffffffU;
    // A chain of collisions must not last: with few seeds left, take the nearest free one.
    while (used_.contains(static_cast<int>(next))) next = next % 0x7fffffffU + 1;
  }
  seed_ = static_cast<int>(next);
}

}  // namespace zeb
