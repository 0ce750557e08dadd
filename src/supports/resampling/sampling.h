// How characters are drawn for one replicate: symmetric resampling,
// jackknife (Farris and others 1996), bootstrap (Felsenstein 1985), and a bootstrap that draws each
// character by itself from a Poisson distribution.
#pragma once

#include <cstdint>
#include <vector>

#include "base/random.h"

namespace zeb {

enum class sampling_scheme : int { symmetric, jackknife, bootstrap, poisson };

struct sampling {
  sampling_scheme scheme = sampling_scheme::symmetric;
  int percent = 33;  // symmetric: of each direction; jackknife: deleted
  bool zero_weights =
      true;           // symmetric: characters go to 0; else all are doubled, and these halved
  int softening = 0;  // bootstraps, 0 to 100: the higher, the milder
};

/// What each of a number of characters weighs, as a multiple of its weight.
struct sample {
  std::vector<std::uint8_t> factors;
  int kept = 0;     // symmetric and jackknife: left as they were
  int changed = 0;  // ... and the others
};

/// Draws from the generator; what comes out depends on nothing else.
sample draw_sample(const sampling& how, int characters, random_generator& random);

/// Characters drawn for each one there is, beyond one: of a softened bootstrap.
inline double extra_draws(int softening) { return softening * 10 / 100.0; }
/// Mean of the Poisson distribution.
int poisson_mean(int softening);

}  // namespace zeb
