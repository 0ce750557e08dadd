// `mult` followed by `bbreak`, and `ienum`, find all shortest trees of few taxa, under every
// collapsing rule: score and number against all trees there are.
#include <gtest/gtest.h>

#include <bit>
#include <map>

#include "base/random.h"
#include "engine/collapsing/collapsing.h"
#include "matrix/matrix_layout.h"
#include "property/random_matrix.h"
#include "search/drivers/bbreak.h"
#include "search/drivers/mult.h"
#include "search/exact/implicit_enumeration.h"
#include "search/moves/swapper.h"
#include "search/search_session.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "support/all_trees.h"
#include "support/program.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using zeb_test::draw;

struct optimal_trees {
  long score = -1;
  std::vector<naive::rooted_tree> trees;
  std::vector<bool> varies;  // by character: not all trees have the same steps for it
};

optimal_trees best_of_all(const zeb_test::oracle_matrix& oracle, int ntax) {
  optimal_trees best;
  std::vector<long> first_steps;
  best.varies.resize(oracle.cells.size(), false);
  naive::for_each_tree(ntax, [&](const naive::rooted_tree& tree) {
    long length = 0;
    for (std::size_t c = 0; c < oracle.cells.size(); ++c) {
      const long steps = naive::least_steps(tree, oracle.cells[c], oracle.additive[c]);
      if (first_steps.size() <= c) first_steps.push_back(steps);
      if (steps != first_steps[c]) best.varies[c] = true;
      length += oracle.weight[c] * steps;
    }
    if (best.score < 0 || length < best.score) best.trees.clear();
    if (best.trees.empty()) best.score = length;
    if (length == best.score) best.trees.push_back(tree);
  });
  return best;
}

/// What searches see of the data: characters that can tell trees apart, a state of a single taxon
/// being missing there.
std::vector<std::vector<std::uint32_t>> informative_cells(const zeb_test::oracle_matrix& oracle,
                                                          const std::vector<bool>& varies) {
  std::vector<std::vector<std::uint32_t>> cells;
  for (std::size_t c = 0; c < oracle.cells.size(); ++c) {
    if (oracle.weight[c] == 0 || !varies[c]) continue;
    std::map<int, int> taxa_with;
    for (const std::uint32_t cell : oracle.cells[c]) {
      for (std::uint32_t rest = cell; rest; rest &= rest - 1) ++taxa_with[std::countr_zero(rest)];
    }
    std::uint32_t kept = 0;
    for (const auto& [state, taxa] : taxa_with) {
      if (taxa > 1) kept |= 1U << state;
    }
    cells.push_back(oracle.cells[c]);
    for (std::uint32_t& cell : cells.back()) cell &= kept;
  }
  return cells;
}

class exhaustive_search : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  static void TearDownTestSuite() {
    collapsing = {};
    swapping = {};
    wipe_matrix();
  }
};

/// Score and number of trees that a search ends with.
std::pair<double, int> search(int seed) {
  set_tree_count(store, 0);
  search_session session;
  session.context().random.seed(static_cast<unsigned>(seed));
  mult_settings options;
  options.replications = 12;
  options.hold = 300;
  mult_search(session.context(), options);
  const bbreak_result result = swap_stored_trees(session.context(), true);
  return {result.best, store.ntrees};
}

/// The same for the exact search, with what a command does at its end.
std::pair<double, int> exact_search() {
  set_tree_count(store, 0);
  search_session session;
  const exact_result result = find_all_best_trees(session.context(), {});
  filter_by_score(session.context(), result.best);
  drop_equal_by_full_rule(session.context());
  return {result.best, store.ntrees};
}

std::vector<tree_node> record_of(const naive::rooted_tree& tree) {
  std::vector<tree_node> record(tree.parent.begin(), tree.parent.end());
  record[static_cast<std::size_t>(tree.terminals)] = static_cast<tree_node>(tree.parent.size());
  return record;
}

/// How many trees the best ones are when the full rule collapses them.
int number_as_collapsed(const optimal_trees& best, int rule) {
  branch_judge judge(rule);
  std::set<std::vector<tree_node>> distinct;
  for (const naive::rooted_tree& tree : best.trees) {
    std::vector<tree_node> record = record_of(tree);
    judge.condense(record);
    distinct.insert(record);
  }
  return static_cast<int>(distinct.size());
}

std::vector<naive::rooted_tree> trees_in_memory(int ntax) {
  std::vector<naive::rooted_tree> trees;
  for (int t = 0; t < store.ntrees; ++t) {
    const tree_span record = stored_tree(t);
    trees.push_back({ntax, std::vector<int>(record.begin(), record.end())});
    trees.back().parent[static_cast<std::size_t>(ntax)] = -1;
  }
  return trees;
}

using groups = std::set<std::uint32_t>;

std::set<groups> all_as_collapsed(const optimal_trees& best,
                                  const std::vector<std::vector<std::uint32_t>>& cells,
                                  naive::support rule) {
  std::set<groups> all;
  for (const naive::rooted_tree& tree : best.trees) all.insert(supported_groups(tree, cells, rule));
  return all;
}

/// What swapping promises under a collapsing rule: shortest trees, each once as collapsed, and none
/// missing that a swap of a binary tree in memory reaches.
void expect_closed(const optimal_trees& best, const std::vector<std::vector<std::uint32_t>>& cells,
                   naive::support rule, int ntax, const std::string& when) {
  std::set<groups> possible;
  std::vector<groups> groups_of_best;
  for (const naive::rooted_tree& tree : best.trees) {
    groups_of_best.push_back(supported_groups(tree, cells, rule));
    possible.insert(groups_of_best.back());
  }
  std::set<groups> found;
  const std::vector<naive::rooted_tree> trees = trees_in_memory(ntax);
  for (const naive::rooted_tree& tree : trees) {
    const groups own = supported_groups(tree, cells, rule);
    EXPECT_TRUE(possible.contains(own)) << when;
    EXPECT_TRUE(found.insert(own).second) << when << ": the same tree twice";
  }
  for (std::size_t i = 0; i < best.trees.size() && found.size() < possible.size(); ++i) {
    if (found.contains(groups_of_best[i])) continue;
    for (const naive::rooted_tree& tree : trees)
      EXPECT_FALSE(one_bisection_apart(tree, best.trees[i])) << when << ": a tree was missed";
  }
}

TEST_F(exhaustive_search, all_shortest_trees_are_found) {
  std::mt19937 g(21);
  for (int round = 0; round < 200; ++round) {
    zeb_test::data_shape shape = zeb_test::random_shape(g, 7, 16);
    shape.ntax = round % 20 == 0 ? 8 : draw(g, 5, 7);
    const bool unordered = round % 2 == 0;
    if (unordered) shape.additive = 0;
    const zeb_test::oracle_matrix oracle = fill_matrix(shape, g);
    set_maxtrees(11000, false);
    collapsing = {};
    swapping = {};
    swapping.cluster_size = draw(g, 3, 15);
    const optimal_trees best = best_of_all(oracle, shape.ntax);
    const auto [score, number] = search(round + 1);
    EXPECT_EQ(static_cast<long>(score), best.score) << "round " << round;
    EXPECT_EQ(number, static_cast<int>(best.trees.size())) << "round " << round;
    EXPECT_EQ(exact_search(), std::pair(score, number)) << "round " << round;
    if (best.trees.size() < 60) {
      collapsing.rule = 4 + round % 3;
      EXPECT_EQ(exact_search().second, number_as_collapsed(best, collapsing.rule))
          << "round " << round << " rule " << collapsing.rule;
    }
    if (!unordered) continue;
    const auto cells = informative_cells(oracle, best.varies);
    constexpr naive::support rules[] = {naive::support::always, naive::support::possible,
                                        naive::support::differs, naive::support::certain};
    collapsing.quick = false;
    for (int rule = 1; rule <= 3; ++rule) {
      collapsing.rule = rule;
      search(round + 1);
      expect_closed(best, cells, rules[rule], shape.ntax,
                    "round " + std::to_string(round) + " rule " + std::to_string(rule));
      EXPECT_EQ(exact_search().second,
                static_cast<int>(all_as_collapsed(best, cells, rules[rule]).size()))
          << "round " << round << " rule " << rule;
    }
  }
}

}  // namespace
}  // namespace zeb
