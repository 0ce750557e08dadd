#include "search/drivers/ratchet.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "base/indices.h"
#include "engine/kernels/reweighting.h"
#include "search/moves/perturbation.h"
#include "search/moves/swapper.h"

namespace zeb {

ratchet_settings ratchet;

namespace {

enum class weight_change { none, down, up };

/// Cycles go through the ways that are on: as they are, down, up.
weight_change change_of_cycle(const ratchet_settings& options, int cycle) {
  const bool equals = options.cycles.equals;
  const bool up = options.upfactor > 0;
  const bool down = options.downfactor > 0;
  const int kinds = equals && up && down ? 3 : 2;
  const int kind = (equals ? 0 : 1) + cycle % kinds;
  if (kind == 0 || (!up && !down)) return weight_change::none;
  return up && !(kind == 1 && down) ? weight_change::up : weight_change::down;
}

/// A factor for each character of the matrix; the characters are gone through from the last one.
std::vector<std::uint8_t> draw_factors(random_generator& random,
                                       std::span<const std::int32_t> characters, int percent,
                                       std::uint8_t factor) {
  std::vector<std::uint8_t> factors(characters.empty() ? 0 : at(characters.back() + 1), 1);
  for (auto c = characters.rbegin(); c != characters.rend(); ++c) {
    if (percent > random.draw() % 100) factors[at(*c)] = factor;
  }
  return factors;
}

perturbed_tree swap_reweighted(search_context& context, std::span<std::int32_t> tree,
                               const ratchet_settings& options) {
  if (options.traditional) {
    tbr_swap(context, tree, {});
    return {};
  }
  perturbation how;
  how.most_moves = options.cycles.numsubs;
  how.giveup = options.cycles.giveup;
  tbr_swap(context, tree, {.perturbing = &how});
  return {.is_changed = how.moves > 0, .moved = std::move(how.moved)};
}

}  // namespace

ratchet_settings fitted_to(const ratchet_settings& options, int taxa, int characters) {
  ratchet_settings fitted = options;
  const double percent = 110.0 / std::sqrt(std::max(characters, 1));
  fitted.upfactor = fitted.downfactor = std::clamp(static_cast<int>(std::lround(percent)), 1, 25);
  fitted.cycles.numsubs = std::max(options.cycles.numsubs, taxa / 8);
  fitted.automatic = false;
  return fitted;
}

cycle_result ratchet_search(search_context& context, std::span<std::int32_t> tree,
                            const ratchet_settings& options, const cycle_task& task) {
  const std::vector<std::int32_t> characters = searched_characters(context.data);
  if (options.automatic) {
    const int count = static_cast<int>(characters.size());
    return ratchet_search(context, tree, fitted_to(options, context.data.n, count), task);
  }
  // Here the count begins with the second cycle.
  cycle_settings cycles = options.cycles;
  if (cycles.fusefreq > 0) --cycles.fusefreq;
  context.shown.stage = stage_ratchet;
  reweighting weights(context.data);
  return run_cycles(context, tree, cycles, task, [&](int cycle) {
    const weight_change change = change_of_cycle(options, cycle);
    if (change == weight_change::up) {
      weights.multiply(draw_factors(context.random, characters, options.upfactor, 2));
    } else if (change == weight_change::down) {
      weights.multiply(draw_factors(context.random, characters, options.downfactor, 0));
    }
    context.shown.hide_score = true;
    perturbed_tree done = swap_reweighted(context, tree, options);
    context.shown.hide_score = false;
    weights.put_back();
    return done;
  });
}

}  // namespace zeb
