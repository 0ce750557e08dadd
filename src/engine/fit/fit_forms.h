// The kernels of implied weights, in the same manner as kernel_forms.h.
//
// The first step beyond the minimum costs a character more than the next, so what a failed field
// costs depends on the steps that its character has on the tree. Those are kept in counters, and
// the cost of one more step by field, so that a kernel reads one number for each failed field. The
// fields of a character lie side by side: where there are several (additive characters), the walk
// over the flags meets them one after the other and charges the second one as the second step.
// Characters of a weighting set share the set's sum of homoplasy: where they may stand, the walk
// adds to that sum as it goes and charges what the sum's curve gains, in the order of the fields;
// since the gains add up to that of the whole sum, the order is of no account. Scans do without the
// walk for candidates that are over the bound by costs rounded down.
#pragma once

#include "engine/fit/step_costs.h"
#include "engine/kernels/kernel_forms.h"

namespace zeb {
namespace {

/// Calls `visit(field)` for each flagged field of the vector at word `w`, in order.
template <class V, int G, class F>
inline void for_each_flag(const field_numbers& numbers, typename V::type e, std::int32_t w,
                          const F& visit) {
  unsigned words = V::nonzero(e);
  if (words == 0) return;
  alignas(64) word flags[words_per_block];
  V::store(flags, e);
  for (; words; words &= words - 1) {
    const int i = __builtin_ctz(words);
    const std::int32_t first = numbers.of_word<G>(w + i);
    for (word f = flags[i]; f; f &= f - 1) visit(first + __builtin_ctz(f) / field_width<G>);
  }
}

/// For the down-pass: counts steps by character and returns none.
template <class V>
struct step_count {
  explicit step_count(const kernel_layout& layout)
      : counters(layout.fits.counters), counter_of(layout.fits.counter_of), numbers(layout) {}
  template <int G>
  typename V::count add(typename V::count c, typename V::type e, std::int32_t w) const {
    for_each_flag<V, G>(numbers, e, w,
                        [&](std::int32_t field) { ++counters[counter_of[field]].steps; });
    return c;
  }
  fit_counter* counters;
  const std::int32_t* counter_of;
  field_numbers numbers;
};

// ---- costs of joining ----

/// A running cost. `last` is the counter of the last failed field among those that may share one,
/// `more` how many of that counter's fields failed before it.
struct fit_sum {
  explicit fit_sum(const fit_layout& fits) : joining(++*fits.joining) {}
  double cost = 0;
  std::uint64_t joining;
  std::int32_t last = -1;
  std::int32_t more = 0;

  void charge_shared(const fit_layout& fits, std::int32_t field) {
    const std::int32_t counter = fits.counter_of[field];
    more = counter == last ? more + 1 : 0;
    last = counter;
    const fit_counter& c = fits.counters[counter];
    const double* const here = c.fit + c.steps + more;
    const double step = c.weight * (here[1] - here[0]);
    cost += c.set < 0 ? step : join_set(fits.sets[c.set], joining, step);
  }
};

/// Adds up one group; false once `stop(cost)` says so, which is asked after every vector.
template <class V, int G, class F, class S>
inline bool add_fit_group(const field_numbers& numbers, const F& operand,
                          const kernel_layout& layout, const S& stop, fit_sum& sum) {
  const fit_layout& fits = layout.fits;
  const std::int32_t end = group_end<G>(layout);
  for (std::int32_t w = group_begin<G>(layout); w < end; w += V::words) {
    const auto e = V::template empties<G>(operand(w));
    if (w < fits.shared_end[G])
      for_each_flag<V, G>(numbers, e, w,
                          [&](std::int32_t field) { sum.charge_shared(fits, field); });
    else
      for_each_flag<V, G>(numbers, e, w,
                          [&](std::int32_t field) { sum.cost += fits.step_cost[field]; });
    if (stop(sum.cost)) return false;
  }
  return true;
}

template <class V, class F, class S>
inline double bounded_fit(const F& operand, const kernel_layout& layout, const S& stop) {
  const field_numbers numbers(layout);
  fit_sum sum(layout.fits);
  if (add_fit_group<V, 0>(numbers, operand, layout, stop, sum) &&
      add_fit_group<V, 1>(numbers, operand, layout, stop, sum) &&
      add_fit_group<V, 2>(numbers, operand, layout, stop, sum))
    add_fit_group<V, 3>(numbers, operand, layout, stop, sum);
  return sum.cost;
}

template <class V>
double fit_pair(const word* clip, const word* branch, const kernel_layout& layout, double bound) {
  return bounded_fit<V>(
      [=](std::int32_t w) { return V::and_(V::load(clip + w), V::load(branch + w)); }, layout,
      [=](double cost) { return cost >= bound; });
}

/// Costs from below, in whole units. Tried with bit counts of binary digits, as weights are added
/// up: eight digits, which it takes, need twice the time.
template <class V>
struct coarse_cost {
  explicit coarse_cost(const kernel_layout& layout)
      : step(static_cast<std::size_t>(layout.end3)), costs(layout.fits.coarse_costs) {}
  template <int G>
  typename V::count add(typename V::count c, typename V::type e, std::int32_t w) const {
    return V::template add_bytes<G>(c, e, costs + w, step);
  }
  std::size_t step;
  const word* costs;
};

/// A cost in whole units that no coarse cost of what is below `bound` exceeds.
inline std::int32_t coarse_bound(const kernel_layout& layout, double bound) {
  // Room for what rounding may have taken from the sum of the fractions.
  const double units = bound * layout.fits.coarse_scale * (1 + 1e-9);
  constexpr std::int32_t unbounded = 1 << 30;
  return units < unbounded ? static_cast<std::int32_t>(units) : unbounded;
}

template <class V>
int fit_bound_scan(const word* clip, const word* base, std::size_t stride,
                   const std::int32_t* items, int from, int count, const kernel_layout& layout,
                   double bound, double* cost) {
  if (bound <= 0) return count;
  std::int32_t coarse = 0;
  const int i = scan_pairs<V, coarse_cost<V>>(clip, base, stride, items, from, count, layout,
                                              coarse_bound(layout, bound), &coarse);
  *cost = coarse / layout.fits.coarse_scale;
  return i;
}

/// Most candidates are over the bound by their coarse costs alone. Tried asking for whole sets
/// ahead where branches are many, since half of them pass the first block: no faster than for that
/// block.
template <class V>
int fit_scan(const word* clip, const word* base, std::size_t stride, const std::int32_t* items,
             int from, int count, const kernel_layout& layout, double bound, double* cost) {
  for (int i = from; i < count; ++i) {
    i = fit_bound_scan<V>(clip, base, stride, items, i, count, layout, bound, cost);
    if (i >= count) break;
    *cost = fit_pair<V>(clip, base + static_cast<std::size_t>(items[i]) * stride, layout, bound);
    if (*cost < bound) return i;
  }
  return count;
}

// ---- counting the steps of joining ----

template <class V, int G, class F>
inline void for_each_failed(const field_numbers& numbers, const word* clip, const word* branch,
                            const kernel_layout& layout, const F& visit) {
  const std::int32_t end = group_end<G>(layout);
  for (std::int32_t w = group_begin<G>(layout); w < end; w += V::words)
    for_each_flag<V, G>(
        numbers, V::template empties<G>(V::and_(V::load(clip + w), V::load(branch + w))), w, visit);
}

/// Moves the counters of all failed fields by `change`, and the sums of sets with them. Returns
/// what the costs of taking steps off add up to; adding gives no sum.
template <class V, std::int32_t change>
inline double move_counters(const word* clip, const word* branch, const kernel_layout& layout) {
  const field_numbers numbers(layout);
  double cost = 0;
  set_counter* moved = nullptr;
  const std::uint64_t moving = ++*layout.fits.joining;
  const auto move = [&](std::int32_t field) {
    fit_counter& c = layout.fits.counters[layout.fits.counter_of[field]];
    const double before = c.fit[c.steps];
    c.steps += change;
    if (c.set < 0) {
      cost += refresh_step_cost(layout, c);
      return;
    }
    set_counter& set = layout.fits.sets[c.set];
    if (set.joining != moving) {
      set.joining = moving;
      set.next = moved;
      moved = &set;
    }
    set.sum += c.weight * (c.fit[c.steps] - before);
  };
  for_each_failed<V, 0>(numbers, clip, branch, layout, move);
  for_each_failed<V, 1>(numbers, clip, branch, layout, move);
  for_each_failed<V, 2>(numbers, clip, branch, layout, move);
  for_each_failed<V, 3>(numbers, clip, branch, layout, move);
  for (; moved; moved = moved->next) {
    const double before = moved->here;
    refresh_set(layout, *moved);
    cost += before - moved->here;
  }
  return cost;
}

template <class V>
void add_fit_steps(const word* clip, const word* branch, const kernel_layout& layout) {
  move_counters<V, 1>(clip, branch, layout);
}

template <class V>
double remove_fit_steps(const word* clip, const word* branch, const kernel_layout& layout) {
  return move_counters<V, -1>(clip, branch, layout);
}

}  // namespace
}  // namespace zeb
