// Plain optimisation of stored trees against the oracle: polytomies, absent taxa, soft and hard;
// the final sets.
#include "engine/plain/plain_optimisation.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"

#include <gtest/gtest.h>

#include <bit>

#include "base/arena.h"
#include "engine/collapsing/collapsing.h"
#include "engine/search_data.h"
#include "matrix/matrix_layout.h"
#include "matrix/symbols.h"
#include "property/random_matrix.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

class plain_optimisation : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { create_arena(std::size_t{1} << 28); }
  static void TearDownTestSuite() {
    wipe_matrix();
    create_arena(16'000'000);
  }
};

/// A stored tree of all taxa with some of its branches taken out.
std::vector<tree_node> random_record(int ntax, double resolution, std::mt19937& g) {
  const naive::rooted_tree tree = naive::random_tree(ntax, g);
  std::vector<tree_node> record(tree.parent.begin(), tree.parent.end());
  record[at(ntax)] = 2 * ntax - 1;
  std::vector<std::uint8_t> marks(record.size(), 1);
  for (int v = ntax + 1; v < 2 * ntax - 1; ++v) marks[at(v)] = chance(g, resolution);
  condense_tree(record, marks);
  return record;
}

naive::rooted_tree as_naive(const_tree_span record, int ntax) {
  naive::rooted_tree tree;
  tree.terminals = ntax;
  tree.parent.assign(record.begin(), record.begin() + node_limit(record, ntax));
  tree.parent[at(ntax)] = -1;
  return tree;
}

/// Of all characters, in slices of any size.
plain_optimiser optimiser_of(int nchar, unsigned seed) {
  return plain_optimiser(std::vector<std::uint8_t>(at(nchar), 1), {}, 1 + seed % 7);
}

/// Fewest steps over all ways to resolve polytomies, by trying them all.
long best_resolution(const naive::rooted_tree& tree, const std::vector<std::uint32_t>& cells,
                     bool additive) {
  std::vector<int> children(tree.parent.size(), 0);
  for (const int p : tree.parent)
    if (p >= 0) ++children[at(p)];
  for (int v = tree.terminals; v < static_cast<int>(tree.parent.size()); ++v) {
    if (children[at(v)] < 3) continue;
    // Join every pair of its descendants below a new node.
    long best = -1;
    for (int a = 0; a < static_cast<int>(tree.parent.size()); ++a)
      for (int b = a + 1; b < static_cast<int>(tree.parent.size()); ++b) {
        if (tree.parent[at(a)] != v || tree.parent[at(b)] != v) continue;
        naive::rooted_tree joined = tree;
        const int fresh = static_cast<int>(joined.parent.size());
        joined.parent.push_back(v);
        joined.parent[at(a)] = joined.parent[at(b)] = fresh;
        const long steps = best_resolution(joined, cells, additive);
        if (best < 0 || steps < best) best = steps;
      }
    return best;
  }
  return naive::least_steps(tree, cells, additive);
}

TEST_F(plain_optimisation, hard_polytomies_and_final_sets_agree_with_the_oracle) {
  for (unsigned seed = 1; seed <= 400; ++seed) {
    std::mt19937 g(seed);
    const zeb_test::data_shape shape = zeb_test::random_shape(g, 9, 6);
    const zeb_test::oracle_matrix oracle = zeb_test::fill_matrix(shape, g);
    plain_optimiser optimiser = optimiser_of(shape.nchar, seed);
    const std::vector<tree_node> record = random_record(shape.ntax, 0.7, g);
    const naive::rooted_tree tree = as_naive(record, shape.ntax);
    optimiser.optimise(record, [&](const plain_slice& slice) {
      for (std::size_t i = 0; i < slice.columns().size(); ++i) {
        const plain_column& column = slice.columns()[i];
        if (column.threshold >= 0) continue;
        const std::vector<std::uint32_t>& cells = oracle.cells[at(column.character)];
        const long steps = naive::least_steps(tree, cells, false);
        for (int v = shape.ntax; v < static_cast<int>(tree.parent.size()); ++v)
          for (int s = 0; s < 32; ++s) {
            if (!(column.observed >> s & 1)) continue;
            const bool possible = naive::least_steps_with_state(tree, cells, false, v, s) == steps;
            ASSERT_EQ((slice.final(v)[i] >> s & 1) != 0, possible)
                << "seed " << seed << " character " << column.character << " node " << v
                << " state " << s;
          }
      }
    });
    for (int c = 0; c < shape.nchar; ++c) {
      const long steps = naive::least_steps(tree, oracle.cells[at(c)], oracle.additive[at(c)]);
      ASSERT_EQ(optimiser.steps(c), steps) << "seed " << seed << " character " << c;
    }
  }
}

TEST_F(plain_optimisation, soft_polytomies_are_as_short_as_the_best_resolution) {
  for (unsigned seed = 1; seed <= 120; ++seed) {
    std::mt19937 g(seed);
    const zeb_test::data_shape shape = zeb_test::random_shape(g, 6, 6);
    const zeb_test::oracle_matrix oracle = zeb_test::fill_matrix(shape, g);
    plain_optimiser optimiser = optimiser_of(shape.nchar, seed);
    const std::vector<tree_node> record = random_record(shape.ntax, 0.4, g);
    const naive::rooted_tree tree = as_naive(record, shape.ntax);
    optimiser.optimise(record, polytomy_kind::soft);
    for (int c = 0; c < shape.nchar; ++c)
      ASSERT_EQ(optimiser.steps(c),
                best_resolution(tree, oracle.cells[at(c)], oracle.additive[at(c)]))
          << "seed " << seed << " character " << c;
  }
}

/// The data with each character as a continuous one, its states as thousandths.
void make_continuous(const zeb_test::oracle_matrix& oracle) {
  const auto nchar = static_cast<int>(oracle.cells.size());
  const auto ntax = static_cast<int>(oracle.cells[0].size());
  matrix.cell_bytes = 4;
  matrix.state_mask = 0xffffffffU;
  begin_matrix(ntax, nchar);
  for (int c = 0; c < nchar; ++c) {
    set_character_type(c, continuous_data);
    for (int t = 0; t < ntax; ++t) {
      const std::uint32_t states = oracle.cells[at(c)][at(t)];
      const int low = std::countr_zero(states);
      const int high = 31 - std::countl_zero(states);
      set_cell(t, c, states ? static_cast<std::uint32_t>(low | high << 16) : missing_continuous);
    }
  }
  finish_matrix();
}

TEST_F(plain_optimisation, continuous_characters_are_as_long_as_ordered_ones) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    std::mt19937 g(seed);
    const bool soft = seed % 3 == 0;
    const zeb_test::data_shape shape = zeb_test::random_shape(g, soft ? 6 : 12, 6);
    const zeb_test::oracle_matrix oracle = zeb_test::fill_matrix(shape, g);
    make_continuous(oracle);
    plain_optimiser optimiser = optimiser_of(shape.nchar, seed);
    const std::vector<tree_node> record = random_record(shape.ntax, soft ? 0.4 : 0.7, g);
    const naive::rooted_tree tree = as_naive(record, shape.ntax);
    optimiser.optimise(record, soft ? polytomy_kind::soft : polytomy_kind::hard);
    for (int c = 0; c < shape.nchar; ++c)
      ASSERT_EQ(optimiser.steps(c), soft ? best_resolution(tree, oracle.cells[at(c)], true)
                                         : naive::least_steps(tree, oracle.cells[at(c)], true))
          << "seed " << seed << " character " << c;
  }
}

TEST_F(plain_optimisation, trees_survive_the_way_to_internal_numbers_and_back) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    std::mt19937 g(seed);
    const zeb_test::data_shape shape = zeb_test::random_shape(g, 20, 4);
    zeb_test::fill_matrix(shape, g);
    matrix.outgroup = draw(g, 0, shape.ntax - 1);
    search_data& data = packed_matrix(true);
    std::vector<tree_node> record = random_record(shape.ntax, 1, g);
    std::vector<std::int32_t> anc(at(data.nodes));
    ASSERT_TRUE(to_internal(data, record, anc, false));
    std::vector<tree_node> back(record.size());
    to_buffer(data, anc, back);
    ASSERT_EQ(check_tree_record(back, shape.ntax), "");
    reroot_tree(record, shape.ntax, matrix.outgroup);
    reroot_tree(back, shape.ntax, matrix.outgroup);
    ASSERT_EQ(record, back) << "seed " << seed;
    const std::vector<tree_node> bush = random_record(shape.ntax, 0, g);
    ASSERT_FALSE(to_internal(data, bush, anc, false));
    ASSERT_TRUE(to_internal(data, bush, anc, true));
    to_buffer(data, anc, back);
    ASSERT_EQ(check_tree_record(back, shape.ntax), "");
  }
}

}  // namespace
}  // namespace zeb
