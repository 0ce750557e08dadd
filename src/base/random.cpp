#include "base/random.h"

#include <ctime>
#include <utility>

namespace zeb {

random_state randomness;

void set_seed(int seed) { randomness.random_seed = seed; }
void set_seed_step(unsigned step) { randomness.seed_step = step; }
void set_random_insertion(bool random) { randomness.random_insertion = random; }
void set_random_outgroup(bool random) { randomness.random_outgroup = random; }
void set_quick_shuffle(bool quick) { randomness.quick_shuffle = quick; }

void seed_generator(random_generator& generator) {
  generator.seed(randomness.random_seed != 0 ? static_cast<unsigned>(randomness.random_seed)
                                             : static_cast<unsigned>(std::time(nullptr)));
}

void random_sequence(random_generator& generator, int count, std::span<int> out, int first,
                     std::span<const std::uint8_t> mask) {
  std::size_t taking_part = 0;
  auto at = [&out](std::size_t i) -> int& { return out[i]; };
  for (int i = 0; i < count; ++i) {
    if (mask.empty() || mask[static_cast<std::size_t>(i)]) at(taking_part++) = i;
  }
  std::size_t place = taking_part;
  for (int i = count - 1; i >= 0 && !mask.empty(); --i) {
    if (!mask[static_cast<std::size_t>(i)]) at(place++) = i;
  }
  if (taking_part < 2) return;
  if (first >= 0) {
    for (std::size_t i = 0; i < taking_part; ++i) {
      if (at(i) == first) std::swap(at(i), at(0));
    }
    for (std::size_t p = 1; p < taking_part; ++p) {
      std::swap(at(p), at(1 + static_cast<std::size_t>(generator.draw()) % (taking_part - 1)));
    }
  } else {
    for (std::size_t p = 0; p < taking_part; ++p) {
      std::swap(at(p), at(static_cast<std::size_t>(generator.draw()) % taking_part));
    }
  }
}

void go_on_from(const random_generator& generator) { randomness.generator = generator; }

void reseed() { seed_generator(randomness.generator); }

}  // namespace zeb
