// The full collapsing rules against enumeration: rules 1 to 4 of every shortest reconstruction,
// with ordered, unordered and continuous characters, polytomies and ignored taxa; rules 5 and 6 of
// every tree one move away.
#include <gtest/gtest.h>

#include <bit>

#include "base/arena.h"
#include "engine/collapsing/collapsing.h"
#include "matrix/matrix_layout.h"
#include "matrix/symbols.h"
#include "property/random_matrix.h"
#include "support/neighbour_trees.h"
#include "support/program.h"
#include "support/reconstructions.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

class collapsing_rules : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    zeb_test::start_program();
    create_arena(std::size_t{1} << 28);
  }
  static void TearDownTestSuite() {
    collapsing = {};
    wipe_matrix();
  }
};

/// Few states and few changes, in the program's matrix and for the oracle. Continuous characters
/// have values of a few thousandths, so that they can be enumerated.
std::vector<naive::small_character> small_data(int ntax, bool with_continuous, std::mt19937& g) {
  matrix.cell_bytes = 4;
  matrix.state_mask = 0xffffffffU;
  const int nchar = draw(g, 1, 4);
  begin_matrix(ntax, nchar);
  std::vector<naive::small_character> characters;
  for (int c = 0; c < nchar; ++c) {
    const bool continuous = with_continuous && chance(g, 0.6);
    if (continuous) set_character_type(c, continuous_data);
    naive::small_character one;
    one.additive = continuous || chance(g, 0.4);
    const int states = draw(g, 2, 4);
    for (int t = 0; t < ntax; ++t) {
      int low = chance(g, 0.5) ? draw(g, 0, states - 1) : t < ntax / 2 ? 0 : 1;
      int high = chance(g, 0.1) ? draw(g, 0, states - 1) : low;
      if (low > high) std::swap(low, high);
      std::uint32_t cell = 1U << low | 1U << high;
      if (chance(g, 0.1)) cell = 0;
      one.cells.push_back(cell);
      if (continuous)
        set_cell(t, c, cell ? static_cast<std::uint32_t>(low | high << 16) : missing_continuous);
      else if (cell)
        set_cell(t, c, cell);
    }
    characters.push_back(one);
  }
  finish_matrix();
  for (int c = 0; c < nchar; ++c)
    if (!matrix.characters[at(c)].is_continuous)
      matrix.characters[at(c)].additive = characters[at(c)].additive;
  return characters;
}

/// A stored tree and the same for the oracle.
struct tree_pair {
  std::vector<tree_node> record;
  naive::rooted_tree tree;
};
tree_pair random_pair(int ntax, double resolution, std::mt19937& g) {
  const naive::rooted_tree binary = naive::random_tree(ntax, g);
  tree_pair pair;
  pair.record.assign(binary.parent.begin(), binary.parent.end());
  pair.record[at(ntax)] = 2 * ntax - 1;
  std::vector<std::uint8_t> marks(pair.record.size(), 1);
  for (int v = ntax + 1; v < 2 * ntax - 1; ++v) marks[at(v)] = chance(g, resolution);
  condense_tree(pair.record, marks);
  pair.tree.terminals = ntax;
  pair.tree.parent.assign(pair.record.begin(), pair.record.begin() + node_limit(pair.record, ntax));
  pair.tree.parent[at(ntax)] = -1;
  return pair;
}

/// Groups of the nodes that the marks keep.
std::set<std::uint32_t> kept_groups(const tree_pair& pair, std::span<const std::uint8_t> marks) {
  const std::vector<std::uint32_t> group = naive::groups_below(pair.tree);
  std::set<std::uint32_t> kept;
  for (std::size_t v = at(pair.tree.terminals + 1); v < group.size(); ++v)
    if (marks[v]) kept.insert(group[v]);
  return kept;
}

void check_rules(int ntax, bool with_continuous, std::mt19937& g) {
  const std::vector<naive::small_character> characters = small_data(ntax, with_continuous, g);
  const tree_pair pair = random_pair(ntax, 0.9, g);
  std::vector<std::uint8_t> marks(pair.record.size());
  for (int rule = 1; rule <= 4; ++rule) {
    collapsing.rule = rule;
    collapse_tree(pair.record, marks);
    ASSERT_EQ(kept_groups(pair, marks), naive::groups_that_stay(pair.tree, characters, rule))
        << "rule " << rule;
  }
}

TEST_F(collapsing_rules, rules_1_to_4_agree_with_all_reconstructions) {
  for (unsigned seed = 1; seed <= 600; ++seed) {
    std::mt19937 g(seed);
    ASSERT_NO_FATAL_FAILURE(check_rules(draw(g, 4, 7), seed % 2 == 0, g)) << "seed " << seed;
  }
}

TEST_F(collapsing_rules, ignored_taxa_are_judged_as_if_pruned) {
  for (unsigned seed = 1; seed <= 400; ++seed) {
    std::mt19937 g(seed);
    const int ntax = draw(g, 5, 8);
    const std::vector<naive::small_character> characters = small_data(ntax, seed % 3 == 0, g);
    const tree_pair pair = random_pair(ntax, 0.9, g);
    std::vector<std::uint8_t> ignored(at(ntax), 0);
    std::uint32_t counted = (1U << ntax) - 1;
    for (int i = draw(g, 1, ntax - 3); i > 0; --i) {
      const int t = draw(g, 0, ntax - 1);
      ignored[at(t)] = 1;
      counted &= ~(1U << t);
    }
    // The groups of the tree without the ignored taxa, and the nodes that still have two sides.
    const std::vector<std::uint32_t> group = naive::groups_below(pair.tree);
    std::vector<int> sides(group.size(), 0);
    std::set<std::uint32_t> groups;
    for (std::size_t v = 0; v < group.size(); ++v) {
      if (pair.tree.parent[v] < 0 || !(group[v] & counted)) continue;
      ++sides[at(pair.tree.parent[v])];
      groups.insert(group[v] & counted);
    }
    const naive::rooted_tree left = naive::tree_of_groups(ntax, counted, groups);
    for (int rule = 1; rule <= 4; ++rule) {
      const std::set<std::uint32_t> stay = naive::groups_that_stay(left, characters, rule);
      std::vector<std::uint8_t> marks(pair.record.size());
      collapsing.rule = rule;
      collapse_tree(pair.record, marks, ignored);
      for (int v = ntax + 1; v < static_cast<int>(group.size()); ++v)
        ASSERT_EQ(marks[at(v)] != 0, sides[at(v)] >= 2 && stay.contains(group[at(v)] & counted))
            << "seed " << seed << " rule " << rule << " node " << v;
    }
  }
}

TEST_F(collapsing_rules, rules_5_and_6_agree_with_all_neighbours) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    std::mt19937 g(seed);
    zeb_test::data_shape shape = zeb_test::random_shape(g, 7, 5);
    shape.ntax = draw(g, 5, 7);
    const zeb_test::oracle_matrix oracle = zeb_test::fill_matrix(shape, g);
    const tree_pair pair = random_pair(shape.ntax, 1, g);
    std::vector<int> rows;
    for (int t = 0; t < shape.ntax; ++t) rows.push_back(t);
    std::vector<std::uint8_t> ignored;
    if (chance(g, 0.3)) {
      ignored.assign(at(shape.ntax), 0);
      for (int t = 1; t < shape.ntax; ++t) ignored[at(t)] = chance(g, 0.4);
    }
    const long length = oracle.length(pair.tree, rows);
    for (const bool tbr : {false, true}) {
      std::set<std::uint32_t> common = kept_groups(pair, std::vector<std::uint8_t>(32, 1));
      naive::for_each_neighbour(pair.tree, tbr, ignored, [&](const naive::rooted_tree& tree) {
        if (oracle.length(tree, rows) > length) return;
        const std::vector<std::uint32_t> found = naive::groups_below(tree);
        std::erase_if(common, [&](std::uint32_t group) {
          return std::find(found.begin(), found.end(), group) == found.end();
        });
      });
      std::vector<std::uint8_t> marks(pair.record.size());
      collapsing.rule = tbr ? 6 : 5;
      collapse_tree(pair.record, marks, ignored);
      ASSERT_EQ(kept_groups(pair, marks), common) << "seed " << seed << " tbr " << tbr;
    }
  }
}

}  // namespace
}  // namespace zeb
