#include "supports/resampling/replicates.h"

#include <algorithm>
#include <memory>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/packet.h"
#include "consensus/strict_consensus.h"
#include "console/progress.h"
#include "engine/kernels/kernel_binding.h"
#include "engine/packing/packed_matrix.h"
#include "matrix/matrix.h"
#include "matrix/settings/character_settings.h"
#include "search/drivers/seed_sequence.h"
#include "search/search_report.h"
#include "search/workers/worker_pool.h"
#include "supports/resampling/landmark_sampling.h"
#include "supports/resampling/replicate_search.h"

namespace zeb {
namespace {

/// The characters weigh what a sample says, and with its end what they weighed before. The packed
/// data stay as they are.
class sampled_weights {
 public:
  sampled_weights();
  /// What is drawn from: characters, or single landmarks.
  int drawn_from() const {
    return points_.count() > 0 ? points_.count() : static_cast<int>(characters_.size());
  }
  /// False where some weights had to stay at the limit.
  bool set(const sample& drawn);

 private:
  sampled_points points_;
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
  if (points_.count() > 0) {
    points_.set(drawn);
    return true;
  }
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

/// What came of one seed.
struct made_replicate {
  replicate found;
  bool cut_short = false;
  bool without_trees = false;
  bool weight_limit = false;
};

class replicate_maker {
 public:
  explicit replicate_maker(const resampling_task& task) : task_(task) {
    if (task.search.empty())
      search_ = std::make_unique<default_search>();
    else
      search_ = std::make_unique<command_search>(task.search, task.any_command);
  }
  made_replicate make(int seed);

 private:
  const resampling_task& task_;
  sampled_weights weights_;
  std::unique_ptr<replicate_search> search_;
  int data_ = matrix.generation;
};

made_replicate replicate_maker::make(int seed) {
  const search_state_scope state;
  made_replicate made;
  random_generator random(static_cast<unsigned>(seed));
  const sample drawn = draw_sample(task_.how, weights_.drawn_from(), random);
  made.weight_limit = !weights_.set(drawn);
  const tree_slots& found = search_->search(std::max(1, random.draw()));
  if (matrix.generation != data_) error_end("The search of a replicate has changed the data");
  made.cut_short = interrupted();
  if (made.cut_short) return made;
  made.without_trees = found.ntrees == 0;
  made.found = {consensus_of(found, search_->collapses(), task_.left_out), drawn.kept,
                drawn.changed};
  return made;
}

void put(const made_replicate& made, packet_writer& to) {
  to.put_list(made.found.tree);
  to.put(made.found.kept);
  to.put(made.found.changed);
  for (const bool flag : {made.cut_short, made.without_trees, made.weight_limit})
    to.put_byte(flag ? 1 : 0);
}

made_replicate replicate_in(std::span<const std::byte> bytes) {
  packet_reader from(bytes);
  made_replicate made;
  made.found.tree = from.list();
  made.found.kept = from.whole();
  made.found.changed = from.whole();
  for (bool* flag : {&made.cut_short, &made.without_trees, &made.weight_limit})
    *flag = from.byte() != 0;
  return made;
}

}  // namespace

const char* activity_of(sampling_scheme scheme) {
  if (scheme == sampling_scheme::symmetric) return "Resampling";
  return scheme == sampling_scheme::jackknife ? "Jacknifing" : "Bootstrapping";
}

void run_replicates(const resampling_task& task, replicates& out) {
  const search_running running;
  const search_state_scope state;
  replicate_maker maker(task);
  out.wanted = task.replications;
  const std::vector<int> seeds = seeds_for(task.replications);
  worker_pool workers(task.replications,
                      [&](int r, packet_writer& found) { put(maker.make(seeds[at(r)]), found); });
  for (int r = 0; r < task.replications; ++r) {
    show_progress(
        text_of("%s (rep. %i of %i)", activity_of(task.how.scheme), r + 1, task.replications), r,
        task.replications);
    check_interrupt();
    const auto bytes = workers.result_of(r, look_for_stop);
    if (interrupted()) break;
    const made_replicate made = bytes ? replicate_in(*bytes) : maker.make(seeds[at(r)]);
    out.weight_limit |= made.weight_limit;
    if (made.cut_short) break;
    out.without_trees += made.without_trees;
    out.done.push_back(made.found);
  }
  out.interrupted = interrupted();
  clear_progress();
}

}  // namespace zeb
