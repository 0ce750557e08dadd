// What steps cost characters and sets of them, and what one more step would, written where the fit
// kernels read it. In an unnamed namespace for the same reason as kernel_forms.h.
#pragma once

#include "engine/kernels/kernels.h"

namespace zeb {
namespace {

/// What so much homoplasy costs.
inline double fit_at(const fit_curve& curve, double h) {
  if (!curve.table) return curve.scale * h / (curve.half + h);
  const double x = h * curve.entries_per_unit;
  const std::int32_t last = curve.last - 1;
  const std::int32_t below = x < last ? static_cast<std::int32_t>(x) : last;
  const double* const entry = curve.table + below;
  return curve.scale * (entry[0] + (x - below) * (entry[1] - entry[0]));
}

/// Adds `more` to the sum of a set in the joining that is costed; returns what that costs.
inline double join_set(set_counter& set, std::uint64_t joining, double more) {
  if (set.joining != joining) {
    set.joining = joining;
    set.joined_sum = set.sum;
    set.joined = set.here;
  }
  set.joined_sum += more;
  const double before = set.joined;
  set.joined = fit_at(set.curve, set.joined_sum);
  return set.joined - before;
}

/// The least that a unit of `joined_sum` can cost when packed fields add to it.
inline double least_slope(const set_counter& set) {
  const double most = set.most_gain;
  if (most <= 0) return 0;
  double least = (fit_at(set.curve, set.sum + most) - set.here) / most;
  if (!set.curve.table) return least;
  // Between two entries of a table the slope from here has no minimum.
  const double unit = 1 / set.curve.entries_per_unit;
  const double here = set.sum * set.curve.entries_per_unit;
  if (here >= set.curve.last) return least;
  for (auto entry = static_cast<std::int32_t>(here) + 1; entry <= set.curve.last; ++entry) {
    const double gain = entry * unit - set.sum;
    if (gain >= most) break;
    const double slope = gain > 0 ? (fit_at(set.curve, entry * unit) - set.here) / gain : least;
    if (slope < least) least = slope;
  }
  return least;
}

/// The least that a step can cost the character, beside others of the same joining.
inline double least_step(const fit_counter& c) {
  const double* const here = c.fit + c.steps;
  const std::int32_t most = c.fields > 0 ? c.fields : 1;
  double least = (here[most] - here[0]) / most;
  if (c.steps >= c.concave_from) return least;
  for (std::int32_t more = 1; more < most; ++more) {
    const double mean = (here[more] - here[0]) / more;
    if (mean < least) least = mean;
  }
  return least;
}

/// Writes the cost of a step from below, in whole units.
inline void write_coarse(const kernel_layout& layout, fit_counter& c, double cost) {
  const double units = cost * layout.fits.coarse_scale;
  const std::int32_t coarse = units < most_coarse ? static_cast<std::int32_t>(units) : most_coarse;
  if (coarse == c.coarse) return;
  c.coarse = coarse;
  for (std::int32_t f = 0; f < c.fields; ++f) {
    const std::int32_t flag = c.first_flag + f * c.flag_width;
    const std::int32_t slice = c.flag_width < 8 ? flag % 8 / c.flag_width : 0;
    word* const costs = layout.fits.coarse_costs + slice * layout.end3;
    reinterpret_cast<unsigned char*>(costs)[flag / 8] = static_cast<unsigned char>(coarse);
  }
}

/// Writes what one more step costs to all fields of a character that is weighted by itself. Returns
/// that cost.
inline double refresh_step_cost(const kernel_layout& layout, fit_counter& c) {
  const double* const here = c.fit + c.steps;
  const double cost = c.weight * (here[1] - here[0]);
  for (std::int32_t f = 0; f < c.fields; ++f) layout.fits.step_cost[c.first_field + f] = cost;
  write_coarse(layout, c, c.weight * least_step(c));
  return cost;
}

/// After the sum of a set changed: the same for all its characters.
inline void refresh_set(const kernel_layout& layout, set_counter& set) {
  set.here = fit_at(set.curve, set.sum);
  const double slope = least_slope(set);
  for (std::int32_t i = 0; i < set.count; ++i) {
    fit_counter& c = layout.fits.counters[set.first[i]];
    write_coarse(layout, c, c.weight * least_step(c) * slope);
  }
}

}  // namespace
}  // namespace zeb
