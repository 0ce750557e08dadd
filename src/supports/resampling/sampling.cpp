#include "supports/resampling/sampling.h"

#include <algorithm>
#include <array>
#include <limits>

#include "base/indices.h"

namespace zeb {
namespace {

constexpr int most_factor = std::numeric_limits<std::uint8_t>::max();

/// By mean, from 1 to 6: a draw of 0 to 999 below the first number is no time, below the second
/// once, and so on to 4 times; above all it is 5 times. The fourth row isn't in order: its third
/// and fourth numbers come too late to be reached, and stand for figures long in use.
constexpr std::array<std::array<int, 5>, 6> thresholds = {{
    {368, 736, 920, 982, 997},
    {136, 407, 677, 858, 948},
    {50, 200, 424, 648, 816},
    {19, 92, 24, 44, 629},
    {7, 41, 125, 266, 441},
    {3, 18, 62, 152, 286},
}};

int row_of(int softening) { return std::min((softening + 10) / 20, 5); }

void draw_symmetric(const sampling& how, sample& out, random_generator& random) {
  const int keep = (50 - how.percent) * 2;
  const int whole = how.zero_weights ? 1 : 2;
  for (std::uint8_t& factor : out.factors) {
    if (random.draw() % 100 <= keep) {
      factor = static_cast<std::uint8_t>(whole);
      ++out.kept;
      continue;
    }
    ++out.changed;
    const bool down = random.draw() % 100 > 49;
    factor = static_cast<std::uint8_t>(down ? whole / 2 : whole * 2);
  }
}

void draw_jackknife(const sampling& how, sample& out, random_generator& random) {
  for (std::uint8_t& factor : out.factors) {
    factor = random.draw() % 100 < how.percent ? 0 : 1;
    ++(factor == 0 ? out.changed : out.kept);
  }
}

void draw_bootstrap(const sampling& how, sample& out, random_generator& random) {
  const int characters = static_cast<int>(out.factors.size());
  if (characters == 0) return;
  const int draws = characters + static_cast<int>(extra_draws(how.softening) * characters);
  std::vector<int> times(at(characters), 0);
  for (int i = 0; i < draws; ++i) ++times[at(random.draw() % characters)];
  for (std::size_t c = 0; c < times.size(); ++c)
    out.factors[c] = static_cast<std::uint8_t>(std::min(times[c], most_factor));
}

void draw_poisson(const sampling& how, sample& out, random_generator& random) {
  const std::array<int, 5>& row = thresholds[at(row_of(how.softening))];
  for (std::uint8_t& factor : out.factors) {
    const int drawn = random.draw() % 1000;
    factor = 0;
    while (factor < row.size() && drawn >= row[factor]) ++factor;
  }
}

}  // namespace

int poisson_mean(int softening) { return row_of(softening) + 1; }

sample draw_sample(const sampling& how, int characters, random_generator& random) {
  sample out;
  out.factors.resize(at(characters));
  switch (how.scheme) {
    case sampling_scheme::symmetric:
      draw_symmetric(how, out, random);
      break;
    case sampling_scheme::jackknife:
      draw_jackknife(how, out, random);
      break;
    case sampling_scheme::bootstrap:
      draw_bootstrap(how, out, random);
      break;
    case sampling_scheme::poisson:
      draw_poisson(how, out, random);
      break;
  }
  return out;
}

}  // namespace zeb
