#include "supports/resampling/replicates.h"

#include <algorithm>
#include <memory>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "consensus/strict_consensus.h"
#include "console/progress.h"
#include "engine/kernels/kernel_binding.h"
#include "engine/packing/packed_matrix.h"
#include "matrix/matrix.h"
#include "matrix/settings/character_settings.h"
#include "search/drivers/seed_sequence.h"
#include "supports/resampling/replicate_search.h"

namespace zeb {
namespace {

/// The characters weigh what a sample says, and with its end what they weighed before. The packed
/// data stay as they are.
class sampled_weights {
 public:
  sampled_weights();
  int characters() const { return static_cast<int>(characters_.size()); }
  /// False where some weights had to stay at the limit.
  bool set(const sample& drawn);

 private:
  weights_scope weights_;
  packed_sampling_scope packed_;
  std::vector<int> characters_;  // those that a search looks at
  std::vector<std::int32_t> own_;
};

sampled_weights::sampled_weights() {
  packed_matrix(false);
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    own_.push_back(record.weight);
    if (record.active && record.weight > 0) characters_.push_back(c);
  }
}

bool sampled_weights::set(const sample& drawn) {
  std::vector<std::int32_t> weights = own_;
  std::int64_t room = largest_weight_sum;
  for (const int c : characters_) room -= own_[at(c)];
  bool all_fit = true;
  for (std::size_t i = 0; i < characters_.size(); ++i) {
    const std::size_t c = at(characters_[i]);
    const std::int64_t wanted = std::int64_t{own_[c]} * drawn.factors[i];
    const std::int64_t most =
        std::min<std::int64_t>(largest_weight, own_[c] + std::max<std::int64_t>(room, 0));
    weights[c] = static_cast<std::int32_t>(std::min(wanted, most));
    room -= std::max(0, weights[c] - own_[c]);
    all_fit = all_fit && wanted <= most;
  }
  weights_.set_weights(weights);
  packed_matrix(true);
  return all_fit;
}

std::unique_ptr<replicate_search> search_of(const resampling_task& task) {
  if (task.search.empty()) return std::make_unique<default_search>();
  return std::make_unique<command_search>(task.search, task.any_command);
}

std::vector<tree_node> consensus_of(const tree_slots& trees, bool collapse,
                                    const std::vector<std::uint8_t>& left_out) {
  if (trees.ntrees == 0) return bush(matrix.ntax, left_out).tree;
  tree_selection selection;
  selection.ntax = matrix.ntax;
  for (int t = 0; t < trees.ntrees; ++t) selection.trees.emplace_back(slot_of(trees, t));
  selection.excluded = left_out;
  selection.collapse = collapse;
  selection.low_memory = consensus.low_memory_always;
  return strict_consensus(selection).tree;
}

std::vector<int> seeds_for(int replications) {
  random_generator generator;
  seed_generator(generator);
  seed_sequence sequence(generator, randomness.seed_step);
  std::vector<int> seeds;
  for (; static_cast<int>(seeds.size()) < replications; sequence.advance())
    seeds.push_back(sequence.current());
  return seeds;
}

}  // namespace

const char* activity_of(sampling_scheme scheme) {
  if (scheme == sampling_scheme::symmetric) return "Resampling";
  return scheme == sampling_scheme::jackknife ? "Jacknifing" : "Bootstrapping";
}

void run_replicates(const resampling_task& task, replicates& out) {
  const search_running running;
  const search_state_scope state;
  sampled_weights weights;
  out.wanted = task.replications;
  const int data = matrix.generation;
  const std::unique_ptr<replicate_search> search = search_of(task);
  for (const int seed : seeds_for(task.replications)) {
    const int number = static_cast<int>(out.done.size()) + 1;
    show_progress(
        text_of("%s (rep. %i of %i)", activity_of(task.how.scheme), number, task.replications),
        number - 1, task.replications);
    check_interrupt();
    random_generator random(static_cast<unsigned>(seed));
    const sample drawn = draw_sample(task.how, weights.characters(), random);
    if (!weights.set(drawn)) out.weight_limit = true;
    const tree_slots& found = search->search(std::max(1, random.draw()));
    if (matrix.generation != data) error_end("The search of a replicate has changed the data");
    if (interrupted()) break;
    out.without_trees += found.ntrees == 0;
    out.done.push_back(
        {consensus_of(found, search->collapses(), task.left_out), drawn.kept, drawn.changed});
  }
  out.interrupted = interrupted();
  clear_progress();
}

}  // namespace zeb
