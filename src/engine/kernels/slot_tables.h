// Tables of kernels, made of all their forms. Included only by the files of the widths.
#pragma once

#include "engine/fit/fit_forms.h"
#include "engine/kernels/kernel_choice.h"
#include "engine/kernels/wave_forms.h"

namespace zeb {
namespace {

/// The table of one width; `C` is the way of adding up.
template <class V, class C>
kernel_slots slots_of(int bits) {
  kernel_slots k;
  k.cost_pair = cost_pair<V, C>;
  k.scan_pairs = scan_pairs<V, C>;
  k.remake_down = node_down<V, C>;
  k.down_pass = down_pass<V, C>;
  k.final_pass = final_pass<V>;
  k.clip_wave = clip_wave<V>;
  k.insert_wave = insert_wave<V>;
  k.width_bits = bits;
  return k;
}

/// The table under implied weights; `C` adds up weighted steps.
template <class V, class C>
kernel_slots implied_slots_of(int bits) {
  kernel_slots k = slots_of<V, C>(bits);
  k.down_pass = down_pass<V, step_count<V>>;
  k.fit = {fit_pair<V>, fit_scan<V>, fit_bound_scan<V>, add_fit_steps<V>, remove_fit_steps<V>};
  return k;
}

/// The tables of the wider forms, which have one way for all weights.
template <class V, class uniform>
kernel_slots slots_for_mode(scoring_mode mode, int bits) {
  switch (mode) {
    case scoring_mode::uniform:
      return slots_of<V, uniform>(bits);
    case scoring_mode::word_weights:
    case scoring_mode::per_character:
      return slots_of<V, digit_cost<V>>(bits);
    case scoring_mode::implied:
      return implied_slots_of<V, digit_cost<V>>(bits);
  }
  return {};
}

}  // namespace
}  // namespace zeb
