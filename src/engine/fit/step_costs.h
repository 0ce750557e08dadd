// What one more step costs a character, written where the fit kernels read it. In an unnamed
// namespace for the same reason as kernel_forms.h.
#pragma once

#include "engine/kernels/kernels.h"

namespace zeb {
namespace {

/// The least that any of the character's fields can cost beside the others, in whole units: with
/// several fields, one of them may be charged as a later step.
inline std::int32_t coarse_cost_of(const fit_layout& fits, const fit_counter& c) {
  double least = fits.fit_step[c.steps];
  for (std::int32_t more = 1; more < c.fields; ++more) {
    const double later = fits.fit_step[c.steps + more];
    if (later < least) least = later;
  }
  return static_cast<std::int32_t>(c.weight * least * fits.coarse_scale);
}

/// Writes what one more step costs to all fields of the character. Returns that cost.
inline double refresh_step_cost(const kernel_layout& layout, fit_counter& c) {
  const fit_layout& fits = layout.fits;
  const double cost = c.weight * fits.fit_step[c.steps];
  for (std::int32_t f = 0; f < c.fields; ++f) fits.step_cost[c.first_field + f] = cost;
  const std::int32_t coarse = coarse_cost_of(fits, c);
  for (std::int32_t changed = coarse ^ c.coarse; changed; changed &= changed - 1) {
    word* const plane = fits.coarse_planes +
                        static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(changed))) *
                            static_cast<std::size_t>(layout.end3);
    for (std::int32_t f = 0; f < c.fields; ++f) {
      const std::int32_t flag = c.first_flag + f * c.flag_width;
      plane[flag >> 5] ^= word{1} << (flag & 31);
    }
  }
  c.coarse = coarse;
  return cost;
}

}  // namespace
}  // namespace zeb
