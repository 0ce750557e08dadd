// The order of branches kept up by insertions, against a walk of the whole tree.
#include "search/moves/branch_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "engine/passes/links.h"

namespace zeb {
namespace {

std::vector<std::int32_t> walked(const search_data& data, int top) {
  std::vector<std::int32_t> internal = {top};
  std::vector<std::int32_t> pairs;
  for (std::size_t i = 0; i < internal.size(); ++i) {
    const auto v = static_cast<std::size_t>(internal[i]);
    for (const int d : {data.tree.first[v], data.tree.second[v]}) {
      pairs.push_back(d);
      if (d >= data.n) internal.push_back(d);
    }
  }
  return pairs;
}

TEST(branch_order, is_that_of_a_walk_whatever_is_inserted_where) {
  for (const unsigned seed : {1U, 2U, 3U, 4U}) {
    std::mt19937 random(seed);
    constexpr int n = 80;
    std::vector<std::vector<std::int32_t>> links(4, std::vector<std::int32_t>(2 * n - 1));
    search_data data;
    data.n = n;
    data.tree = {links[0], links[1], links[2], links[3]};
    const auto hang = [&](int ancestor, int left, int right) {
      links[2][static_cast<std::size_t>(ancestor)] = left;
      links[3][static_cast<std::size_t>(ancestor)] = right;
      for (const auto& [node, sister] : {std::pair(left, right), std::pair(right, left)}) {
        links[0][static_cast<std::size_t>(node)] = ancestor;
        links[1][static_cast<std::size_t>(node)] = sister;
      }
    };
    hang(n, 0, n + 1);
    hang(n + 1, 1, 2);
    branch_order order;
    order.begin(n + 1, 1, 2);
    std::vector<std::int32_t> listed(2 * n - 1);
    for (int taxon = 3; taxon < n; ++taxon) {
      const int joint = n + taxon - 1;
      // The branch of the top, any branch, the newest one (which makes a comb).
      const int top = data.tree.sister[0];
      const auto placed = static_cast<std::size_t>(order.list(listed));
      int target = listed[random() % placed];
      if (random() % 4 == 0) target = top;
      if (seed == 4) target = taxon - 1;
      order.insert(data, target, joint, taxon);
      attach(data.tree, taxon, joint, target);
      const std::vector<std::int32_t> expected = walked(data, data.tree.sister[0]);
      ASSERT_EQ(order.list(listed), static_cast<int>(expected.size())) << "seed " << seed;
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), listed.begin()))
          << "seed " << seed << ", taxon " << taxon;
    }
  }
}

}  // namespace
}  // namespace zeb
