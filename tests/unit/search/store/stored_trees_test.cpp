// Slots that close ranks in the midst of a search: what is known of the trees moves with them.
#include "search/store/stored_trees.h"

#include <gtest/gtest.h>

#include <numeric>
#include <set>

#include "base/indices.h"
#include "engine/packing/packed_matrix.h"
#include "engine/registration.h"
#include "property/random_matrix.h"

namespace zeb {
namespace {

using zeb_test::draw;

class stored_trees : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    create_arena(std::size_t{1} << 24);
    register_engine();
  }
  static void TearDownTestSuite() {
    wipe_matrix();
    create_arena(16'000'000);
  }
};

using ancestors = std::vector<std::int32_t>;

ancestors random_ancestors(int n, std::mt19937& g) {
  const naive::rooted_tree tree = naive::random_tree(n, g);
  ancestors anc(tree.parent.begin(), tree.parent.end());
  anc[at(n)] = 2 * n - 1;
  return anc;
}

/// The same tree with its internal nodes numbered the other way round.
ancestors renumbered(const ancestors& anc, int n) {
  const int nodes = 2 * n - 1;
  const auto number = [&](int v) { return v <= n ? v : nodes + n - v; };
  ancestors result(anc.size());
  for (int v = 0; v < nodes; ++v) {
    if (v != n) result[at(number(v))] = number(anc[at(v)]);
  }
  result[at(n)] = nodes;
  return result;
}

TEST_F(stored_trees, records_follow_their_trees) {
  std::mt19937 g(8);
  zeb_test::data_shape shape;
  shape.ntax = 9;
  fill_matrix(shape, g);
  for (int round = 0; round < 200; ++round) {
    search_data& data = packed_matrix(true);
    private_slots slots(40, data.nodes);
    context_scope scope(data, slots, {}, random_generator());
    search_context& context = scope.context();
    std::vector<ancestors> trees;
    while (trees.size() < 25) {
      ancestors tree = random_ancestors(data.n, g);
      const int slot = slots.ntrees;
      if (!store_tree(context, tree, slot, draw(g, 10, 14))) continue;
      EXPECT_EQ(slots.ntrees, slot + 1);
      EXPECT_FALSE(store_tree(context, renumbered(tree, data.n), slot + 1, 10)) << round;
      record_of(context, slot).waits = zeb_test::chance(g, 0.2);
      trees.push_back(std::move(tree));
    }
    const int first = draw(g, 0, 10);
    const int swapped = draw(g, 0, 24);
    context.swapping_index = context.shown.current_tree = swapped;
    std::vector<std::size_t> kept;
    for (int t = 0; t < 25; ++t) {
      const tree_record& record = record_of(context, t);
      if (t < first || record.score <= 12 || record.waits || t == swapped) kept.push_back(at(t));
    }
    purge_above(context, 12, first);
    ASSERT_EQ(slots.ntrees, static_cast<int>(kept.size()));
    EXPECT_EQ(kept[at(context.swapping_index)], at(swapped)) << round;
    EXPECT_EQ(context.shown.current_tree, context.swapping_index);
    const std::set<std::size_t> still_there(kept.begin(), kept.end());
    for (std::size_t t = 0; t < trees.size(); ++t) {
      const int slot = slots.ntrees;
      EXPECT_EQ(tree_is_new(context, trees[t], slot, 10), !still_there.contains(t)) << round;
    }
    // A tree can't be put where it would be twice, but over itself it can.
    const int other = slots.ntrees - 1;
    EXPECT_FALSE(replace_tree(context, trees[kept.front()], other, 10));
    EXPECT_TRUE(replace_tree(context, trees[kept.back()], other, 9));
    EXPECT_EQ(record_of(context, other).score, 9);
  }
}

}  // namespace
}  // namespace zeb
