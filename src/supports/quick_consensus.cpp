#include "supports/quick_consensus.h"

#include <algorithm>

#include "base/interrupts.h"
#include "base/random.h"
#include "console/progress.h"
#include "search/search_session.h"
#include "trees/tree_store.h"

namespace zeb {

quick_consensus_settings quick_consensus;

std::vector<std::vector<tree_node>> replicated_trees(const quick_consensus_settings& options) {
  reseed();
  std::vector<int> seeds;
  for (int r = 0; r < options.replications; ++r) seeds.push_back(std::max(1, draw()));
  mult_settings one;
  one.replications = 1;
  one.hold = 1;
  one.swapper = options.swapper;
  one.addition = mult.addition;
  std::vector<std::vector<tree_node>> found;
  for (std::size_t r = 0; r < seeds.size() && !interrupted(); ++r) {
    show_progress("Quick consensus", static_cast<double>(r), options.replications);
    private_slots slot(1, store.nnodes);
    {
      search_session session(slot, silence::on);
      session.context().random.seed(static_cast<unsigned>(seeds[r]));
      mult_search(session.context(), one);
    }
    if (slot.ntrees == 0) continue;
    const const_tree_span tree = slot_of(slot, 0);
    found.emplace_back(tree.begin(), tree.end());
  }
  clear_progress();
  return found;
}

}  // namespace zeb
