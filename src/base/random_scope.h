// A seed of its own for what runs commands of the user.
#pragma once

#include "base/random.h"

namespace zeb {

/// As long as one lives, `rseed` and the process's generator stand at this seed; afterwards as they
/// stood before.
class random_scope {
 public:
  explicit random_scope(int seed);
  ~random_scope();
  random_scope(const random_scope&) = delete;
  random_scope& operator=(const random_scope&) = delete;

 private:
  random_state former_ = randomness;
};

}  // namespace zeb
