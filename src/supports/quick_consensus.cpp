#include "supports/quick_consensus.h"

#include <algorithm>

#include "base/random.h"
#include "console/output.h"
#include "search/search_session.h"

namespace zeb {

quick_consensus_settings quick_consensus;

namespace {

/// The search says nothing of its own.
class silent_search {
 public:
  silent_search() : saved_(searching.silent) { searching.silent = true; }
  ~silent_search() { searching.silent = saved_; }
  silent_search(const silent_search&) = delete;
  silent_search& operator=(const silent_search&) = delete;

 private:
  bool saved_;
};

class random_seed_kept {
 public:
  random_seed_kept() : saved_(randomness.random_seed) {}
  ~random_seed_kept() { randomness.random_seed = saved_; }
  random_seed_kept(const random_seed_kept&) = delete;
  random_seed_kept& operator=(const random_seed_kept&) = delete;

 private:
  int saved_;
};

}  // namespace

std::vector<std::vector<tree_node>> replicated_trees(const quick_consensus_settings& options) {
  const random_seed_kept seed_kept;
  const silent_search silence;
  reseed();
  std::vector<int> seeds;
  for (int r = 0; r < options.replications; ++r) seeds.push_back(std::max(1, draw()));
  mult_settings one;
  one.replications = 1;
  one.hold = 1;
  one.swapper = options.swapper;
  one.addition = mult.addition;
  std::vector<std::vector<tree_node>> found;
  const buffer_aside kept;
  for (int r = 0; r < options.replications && !interrupted(); ++r) {
    show_progress("Quick consensus", r, options.replications);
    set_tree_count(store, 0);
    randomness.random_seed = seeds[static_cast<std::size_t>(r)];
    {
      const search_session session;
      mult_search(one);
    }
    if (store.ntrees == 0) continue;
    const const_tree_span tree = stored_tree(0);
    found.emplace_back(tree.begin(), tree.end());
  }
  clear_progress();
  return found;
}

}  // namespace zeb
