// Characters with costs of changes against the oracle: reports on stored trees, least steps.
#include <gtest/gtest.h>

#include "base/arena.h"
#include "engine/collapsing/collapsing.h"
#include "engine/plain/plain_optimisation.h"
#include "matrix/character_steps.h"
#include "property/random_costs.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

class costs : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { create_arena(std::size_t{1} << 28); }
  static void TearDownTestSuite() {
    wipe_matrix();
    create_arena(16'000'000);
  }
};

zeb_test::mixed_shape small_shape(std::mt19937& g) {
  zeb_test::mixed_shape shape;
  shape.ntax = draw(g, 4, 7);
  shape.states = draw(g, 2, 5);
  shape.continuous = draw(g, 0, 2);
  return shape;
}

std::vector<tree_node> as_record(const naive::rooted_tree& tree) {
  std::vector<tree_node> record(tree.parent.begin(), tree.parent.end());
  record.resize(at(2 * tree.terminals - 1), 0);
  record[at(tree.terminals)] = static_cast<tree_node>(tree.parent.size());
  return record;
}

/// Some internal nodes go, their descendants join the ancestor.
naive::rooted_tree with_polytomies(naive::rooted_tree tree, std::mt19937& g) {
  for (int v = static_cast<int>(tree.parent.size()) - 1; v > tree.terminals; --v) {
    if (!chance(g, 0.3)) continue;
    const int above = tree.parent[at(v)];
    for (int& p : tree.parent) {
      if (p == v) p = above;
      if (p > v) --p;
    }
    tree.parent.erase(tree.parent.begin() + v);
  }
  return tree;
}

TEST_F(costs, of_stored_trees_and_their_sets_agree_with_the_oracle) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    std::mt19937 g(seed);
    const zeb_test::mixed_shape shape = small_shape(g);
    const zeb_test::mixed_matrix data = zeb_test::fill_mixed(shape, g);
    const naive::rooted_tree tree = with_polytomies(naive::random_tree(shape.ntax, g), g);
    plain_optimiser optimiser(std::vector<std::uint8_t>(data.cells.size(), 1), {}, 1 + seed % 7);
    const auto check_sets = [&](const plain_slice& slice) {
      const cost_optimiser& with_costs = slice.with_costs();
      for (std::size_t i = 0; i < with_costs.size(); ++i) {
        const auto c = at(with_costs.character(i));
        const long best = naive::least_cost(tree, data.cells[c], data.costs[c]);
        if (shape.ntax < 6) {
          ASSERT_EQ(best, naive::least_cost_by_trying(tree, data.cells[c], data.costs[c]));
        }
        for (int v = 0; v < static_cast<int>(tree.parent.size()); ++v)
          for (int s = 0; s < data.costs[c].states; ++s)
            ASSERT_EQ((with_costs.final(v)[i] >> s & 1) != 0,
                      naive::least_cost(tree, data.cells[c], data.costs[c], v, s) == best)
                << "seed " << seed << " character " << c << " node " << v << " state " << s
                << " of " << data.costs[c].states << ", " << shape.ntax << " taxa";
      }
    };
    optimiser.optimise(as_record(tree), check_sets);
    for (std::size_t c = 0; c < data.cells.size(); ++c)
      ASSERT_EQ(optimiser.steps(static_cast<int>(c)), data.steps(c, tree))
          << "seed " << seed << " character " << c;
    ASSERT_DOUBLE_EQ(optimiser.score(), data.length(tree)) << "seed " << seed;
  }
}

long best_resolution(const naive::rooted_tree& tree, const std::vector<std::uint32_t>& cells,
                     const naive::change_costs& costs) {
  const int nodes = static_cast<int>(tree.parent.size());
  for (int v = tree.terminals; v < nodes; ++v) {
    if (std::count(tree.parent.begin(), tree.parent.end(), v) < 3) continue;
    long best = -1;
    for (int a = 0; a < nodes; ++a)
      for (int b = a + 1; b < nodes; ++b) {
        if (tree.parent[at(a)] != v || tree.parent[at(b)] != v) continue;
        naive::rooted_tree joined = tree;
        joined.parent.push_back(v);
        joined.parent[at(a)] = joined.parent[at(b)] = nodes;
        const long cost = best_resolution(joined, cells, costs);
        if (best < 0 || cost < best) best = cost;
      }
    return best;
  }
  return naive::least_cost(tree, cells, costs);
}

TEST_F(costs, of_soft_polytomies_are_those_of_the_best_resolution) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    std::mt19937 g(seed);
    zeb_test::mixed_shape shape = small_shape(g);
    shape.ntax = draw(g, 4, 5);
    const zeb_test::mixed_matrix data = zeb_test::fill_mixed(shape, g);
    const naive::rooted_tree tree = with_polytomies(naive::random_tree(shape.ntax, g), g);
    plain_optimiser optimiser(std::vector<std::uint8_t>(data.cells.size(), 1));
    optimiser.optimise(as_record(tree), polytomy_kind::soft);
    for (std::size_t c = 0; c < data.cells.size(); ++c)
      if (!data.costs[c].cost.empty()) {
        ASSERT_EQ(optimiser.steps(static_cast<int>(c)),
                  best_resolution(tree, data.cells[c], data.costs[c]))
            << "seed " << seed << " character " << c;
      }
  }
}

}  // namespace
}  // namespace zeb
