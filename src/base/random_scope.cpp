#include "base/random_scope.h"

namespace zeb {

random_scope::random_scope(int seed) {
  set_seed(seed);
  reseed();
}

random_scope::~random_scope() { randomness = former_; }

}  // namespace zeb
