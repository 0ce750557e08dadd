// The random numbers of searches and randomisations: one generator object, one place.
#pragma once

#include <cstdint>
#include <span>

namespace zeb {

/// Small generator with a 31-bit draw. The same seed gives the same sequence on every machine.
class random_generator {
 public:
  static constexpr int largest = 2147483647;
  explicit random_generator(unsigned start = 1) { seed(start); }
  /// Restarts the sequence. Seeds that differ by one give unrelated sequences.
  void seed(unsigned start) { state_ = mixed(step * (start + 1ULL)); }
  /// Uniform in 0 to 2147483647.
  int draw() {
    state_ += step;
    return static_cast<int>(mixed(state_) >> 33);
  }

 private:
  static constexpr std::uint64_t step = 0x9e3779b97f4a7c15ULL;
  static std::uint64_t mixed(std::uint64_t z) {
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
  }

  std::uint64_t state_ = 0;
};

/// The settings of `rseed`, and the generator of everything but searches, which have their own.
struct random_state {
  random_generator generator;
  int random_seed = 1;            // 0: each seeding takes the clock
  unsigned seed_step = 0;         // not 0: consecutive replications take seed + step, unchecked
  bool quick_shuffle = false;     // `rseed !`: quick approximation
  bool random_insertion = false;  // `rseed [`
  bool random_outgroup = false;   // `rseed >`
};
extern random_state randomness;

void set_seed(int seed);
void set_seed_step(unsigned step);
void set_random_insertion(bool random);
void set_random_outgroup(bool random);
void set_quick_shuffle(bool quick);

/// Restarts the generator from the user's seed, or from the clock where that is 0.
void seed_generator(random_generator& generator);

/// Fills `out` with 0 to count-1, shuffled by draws of the generator, which is taken as it stands.
/// With `first` >= 0, out[0] is `first` and the others are shuffled. `mask`, if not empty, holds 1
/// for the entries that take part: the others go to the end, in descending order.
void random_sequence(random_generator& generator, int count, std::span<int> out, int first,
                     std::span<const std::uint8_t> mask);

/// Draws from the process's generator, 0 to 2147483647.
inline int draw() { return randomness.generator.draw(); }
/// The process's generator goes on from where `generator` stands.
void go_on_from(const random_generator& generator);
/// Seeds the process's generator.
void reseed();

}  // namespace zeb
