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
  void seed(unsigned start) { state_ = 0x9e3779b97f4a7c15ULL * (start + 1ULL); }
  /// Uniform in 0 to 2147483647.
  int draw() {
    state_ += 0x9e3779b97f4a7c15ULL;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return static_cast<int>((z ^ (z >> 31)) >> 33);
  }

 private:
  std::uint64_t state_ = 0;
};

/// The settings of `rseed`, and the generator of all searches.
struct random_state {
  random_generator generator;
  int random_seed = 1;            // 0: each re-seeding takes the clock; -1: don't re-seed
  unsigned seed_step = 0;         // not 0: consecutive replications take seed + step, unchecked
  bool quick_shuffle = false;     // `rseed !`: quick approximation
  bool random_insertion = false;  // `rseed [`
  bool random_outgroup = false;   // `rseed >`
};
extern random_state randomness;

/// Draws from the search generator, 0 to 2147483647.
inline int draw() { return randomness.generator.draw(); }
/// Re-seeds the search generator from `random_seed`, from the clock where that is 0, not at all
/// where it is -1.
void reseed();
/// Fills `out` with 0 to count-1, shuffled. With `first` >= 0, out[0] is `first` and the others are
/// shuffled. `mask`, if not empty, holds 1 for the entries that take part: the others go to the
/// end, in descending order. Re-seeds first, as `reseed` does.
void random_sequence(int count, std::span<int> out, int first, std::span<const std::uint8_t> mask);

}  // namespace zeb
