#include "search/drivers/ratchet.h"

#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/kernels/reweighting.h"
#include "engine/passes/passes.h"
#include "search/drivers/seed_sequence.h"
#include "search/moves/perturbation.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"

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

class ratchet_run {
 public:
  ratchet_run(search_context& context, std::span<std::int32_t> tree,
              const ratchet_settings& options, const cycle_task& task)
      : context_(context),
        tree_(tree),
        options_(options),
        keeper_(context, tree, options.cycles, task),
        weights_(context.data),
        characters_(searched_characters(context.data)) {}
  cycle_result run();

 private:
  void draw_weights(weight_change change);
  void perturb();

  search_context& context_;
  std::span<std::int32_t> tree_;
  const ratchet_settings& options_;
  cycle_keeper keeper_;
  reweighting weights_;
  const std::vector<std::int32_t> characters_;
};

void ratchet_run::draw_weights(weight_change change) {
  if (change == weight_change::none || characters_.empty()) return;
  const bool up = change == weight_change::up;
  const int percent = up ? options_.upfactor : options_.downfactor;
  std::vector<std::uint8_t> factor(at(characters_.back() + 1), 1);
  for (auto c = characters_.rbegin(); c != characters_.rend(); ++c) {
    if (percent > context_.random.draw() % 100) factor[at(*c)] = up ? 2 : 0;
  }
  weights_.multiply(factor);
}

void ratchet_run::perturb() {
  context_.shown.hide_score = true;
  if (options_.traditional) {
    tbr_swap(context_, tree_, {});
  } else {
    perturbation how;
    how.most_moves = options_.cycles.numsubs;
    how.giveup = options_.cycles.giveup;
    tbr_swap(context_, tree_, {.perturbing = &how});
  }
  context_.shown.hide_score = false;
}

cycle_result ratchet_run::run() {
  context_.shown.stage = stage_ratchet;
  seed_sequence seeds(context_.random, context_.rules.seed_step);
  for (int cycle = 0; cycle < options_.cycles.iterations; ++cycle) {
    keeper_.begin_cycle(cycle);
    context_.random.seed(static_cast<unsigned>(seeds.current()));
    seeds.advance();
    draw_weights(change_of_cycle(options_, cycle));
    perturb();
    weights_.put_back();
    const double score =
        interrupted() ? tree_length(context_.data, tree_) : tbr_swap(context_, tree_, {});
    if (keeper_.end_cycle(score)) break;
  }
  return keeper_.finish();
}

}  // namespace

cycle_result ratchet_search(search_context& context, std::span<std::int32_t> tree,
                            const ratchet_settings& options, const cycle_task& task) {
  return ratchet_run(context, tree, options, task).run();
}

}  // namespace zeb
