#include "search/drivers/drift.h"

#include <algorithm>
#include <utility>

#include "search/moves/perturbation.h"
#include "search/moves/swapper.h"

namespace zeb {

drift_settings drift;

namespace {

/// The data are those of a part of the taxa of an outer search.
bool is_reduced(const search_context& context) {
  return context.outer && context.data.n < context.outer->data.n;
}

bool accepts_worse_moves(const search_data& data, const drift_settings& options, int cycle) {
  return options.pert && (cycle % 2 == 1 || !options.cycles.equals || data.implied_on);
}

perturbation perturbation_of_cycle(const search_context& context, const drift_settings& options,
                                   int cycle) {
  const bool reduced = is_reduced(context);
  const bool flat = cycle < options.flat;
  perturbation how;
  how.most_moves = flat ? options.flatnumsubs : options.cycles.numsubs;
  if (reduced) how.most_moves = std::min(how.most_moves, std::max(25, context.data.n / 2));
  how.giveup = options.cycles.giveup;
  how.accept_worse = accepts_worse_moves(context.data, options, cycle);
  how.fit_difference = options.fitdiff;
  how.relative_fit_difference =
      flat && !reduced && options.rflat >= 0 ? options.rflat : options.rfitdiff;
  how.factor = options.xfactor;
  return how;
}

}  // namespace

cycle_result drift_search(search_context& context, std::span<std::int32_t> tree,
                          const drift_settings& options, const cycle_task& task) {
  context.shown.stage = stage_drift;
  return run_cycles(context, tree, options.cycles, task, [&](int cycle) -> perturbed_tree {
    perturbation how = perturbation_of_cycle(context, options, cycle);
    tbr_swap(context, tree, {.perturbing = &how});
    return {.is_changed = how.moves > 0,
            .is_cornered = !options.pert && cycle > 0 && !how.met_other,
            .moved = std::move(how.moved)};
  });
}

}  // namespace zeb
