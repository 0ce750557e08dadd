#include "supports/quick_consensus.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/packet.h"
#include "base/random.h"
#include "console/progress.h"
#include "engine/packing/packed_matrix.h"
#include "search/combined/search_state.h"
#include "search/search_report.h"
#include "search/search_session.h"
#include "search/workers/worker_pool.h"
#include "trees/tree_store.h"

namespace zeb {

quick_consensus_settings quick_consensus;

namespace {

/// The tree of one replication; empty where it was stopped before it had any.
std::vector<tree_node> replicated_tree(const mult_settings& how, int seed) {
  const search_state_scope state;
  private_slots slot(1, store.nnodes);
  {
    search_session session(slot, silence::on);
    session.context().random.seed(static_cast<unsigned>(seed));
    mult_search(session.context(), how);
  }
  if (slot.ntrees == 0) return {};
  const const_tree_span tree = slot_of(slot, 0);
  return {tree.begin(), tree.end()};
}

std::vector<int> seeds_for(int replications) {
  reseed();
  std::vector<int> seeds;
  for (int r = 0; r < replications; ++r) seeds.push_back(std::max(1, draw()));
  return seeds;
}

}  // namespace

std::vector<std::vector<tree_node>> replicated_trees(const quick_consensus_settings& options) {
  const search_running running;
  const std::vector<int> seeds = seeds_for(options.replications);
  mult_settings one;
  one.replications = 1;
  one.hold = 1;
  one.swapper = options.swapper;
  one.addition = mult.addition;
  packed_matrix(false);  // once, not by each worker
  worker_pool workers(options.replications, [&](int r, packet_writer& found) {
    found.put_list(replicated_tree(one, seeds[at(r)]));
  });
  std::vector<std::vector<tree_node>> found;
  for (int r = 0; r < options.replications && !interrupted(); ++r) {
    show_progress("Quick consensus", r, options.replications);
    const auto bytes = workers.result_of(r, look_for_stop);
    if (interrupted() && !bytes) break;
    std::vector<tree_node> tree =
        bytes ? packet_reader(*bytes).list() : replicated_tree(one, seeds[at(r)]);
    if (!tree.empty()) found.push_back(std::move(tree));
  }
  clear_progress();
  return found;
}

}  // namespace zeb
