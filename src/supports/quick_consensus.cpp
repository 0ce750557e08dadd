#include "supports/quick_consensus.h"

#include <algorithm>

#include "base/random.h"
#include "console/output.h"
#include "search/search_session.h"

namespace zeb {

quick_consensus_settings quick_consensus;

namespace {

/// Empties the buffer for a search that would count a tree found twice as one, and puts its trees
/// and their groups back.
class trees_aside {
 public:
  trees_aside() {
    for (int t = 0; t < store.ntrees; ++t) {
      const const_tree_span tree = stored_tree(t);
      trees_.emplace_back(tree.begin(), tree.end());
      const std::uint32_t* words = store.tree_groups[static_cast<std::size_t>(t)];
      groups_.emplace_back(words, words + store.tgroup_words);
    }
    empty();
  }
  ~trees_aside() {
    for (std::size_t t = 0; t < trees_.size(); ++t) {
      std::copy(trees_[t].begin(), trees_[t].end(), store.trees[t]);
      std::copy(groups_[t].begin(), groups_[t].end(), store.tree_groups[t]);
    }
    store.ntrees = static_cast<int>(trees_.size());
  }
  trees_aside(const trees_aside&) = delete;
  trees_aside& operator=(const trees_aside&) = delete;

  static void empty() { store.ntrees = 0; }

 private:
  std::vector<std::vector<tree_node>> trees_;
  std::vector<std::vector<std::uint32_t>> groups_;
};

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
  const trees_aside kept;
  for (int r = 0; r < options.replications && !interrupted(); ++r) {
    show_progress("Quick consensus", r, options.replications);
    trees_aside::empty();
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
