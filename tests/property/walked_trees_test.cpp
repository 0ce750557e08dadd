// The trees that walks visit, against neighbours made by plain edits and against all trees.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "base/indices.h"
#include "support/all_trees.h"
#include "support/neighbour_trees.h"
#include "trees/tree_record.h"
#include "walking/growing_trees.h"
#include "walking/rearrangements.h"

namespace zeb {
namespace {

using tree_key = std::vector<tree_node>;

tree_key key_of(const_tree_span tree, int ntax) {
  return {tree.begin(), tree.begin() + node_limit(tree, ntax)};
}

tree_key record_of(const naive::rooted_tree& tree) {
  tree_key record(at(2 * tree.terminals - 1), 0);
  std::vector<int> ancestors = tree.parent;
  record_from_ancestors(ancestors, record, tree.terminals);
  return record;
}

std::vector<tree_key> all_trees(int ntax) {
  std::vector<tree_key> trees;
  naive::for_each_tree(ntax,
                       [&](const naive::rooted_tree& tree) { trees.push_back(record_of(tree)); });
  return trees;
}

TEST(walked_trees, each_neighbour_is_visited_once) {
  for (int ntax = 4; ntax <= 7; ++ntax) {
    int tried = 0;
    naive::for_each_tree(ntax, [&](const naive::rooted_tree& start) {
      if (ntax > 5 && tried++ % 37 != 0) return;
      const tree_key tree = record_of(start);
      std::set<tree_key> expected;
      naive::for_each_neighbour(start, false, {}, [&](const naive::rooted_tree& other) {
        expected.insert(record_of(other));
      });
      expected.erase(tree);
      std::set<tree_key> visited;
      rearrangements moves(tree, ntax, 0, move_kind::spr, false);
      for (tree_key next(tree.size()); moves.next(next);)
        EXPECT_TRUE(visited.insert(key_of(next, ntax)).second);
      EXPECT_EQ(visited, expected);

      rearrangements turned(tree, ntax, 0, move_kind::tbr, false);
      std::set<tree_key> by_turning;
      for (tree_key next(tree.size()); turned.next(next);)
        EXPECT_TRUE(by_turning.insert(key_of(next, ntax)).second);
      for (const tree_key& one : expected) EXPECT_TRUE(by_turning.contains(one));
      std::set<tree_key> around;
      naive::for_each_neighbour(start, true, {}, [&](const naive::rooted_tree& other) {
        around.insert(record_of(other));
      });
      for (const tree_key& one : by_turning) EXPECT_TRUE(around.contains(one));
    });
  }
}

TEST(walked_trees, growing_trees_come_to_all_trees_once) {
  for (int ntax = 4; ntax <= 7; ++ntax) {
    std::vector<int> taxa(at(ntax));
    for (int t = 0; t < ntax; ++t) taxa[at(t)] = t;
    growing_trees trees(taxa, ntax);
    std::set<tree_key> whole;
    std::size_t visits = 0;
    double percent = 0;
    for (tree_key tree(at(2 * ntax - 1)); trees.next(true);) {
      EXPECT_GE(trees.percent(), percent);
      percent = trees.percent();
      if (!trees.complete()) continue;
      ++visits;
      trees.write(tree);
      whole.insert(tree);
    }
    const std::vector<tree_key> all = all_trees(ntax);
    EXPECT_EQ(whole, std::set<tree_key>(all.begin(), all.end()));
    EXPECT_EQ(visits, whole.size());
  }
}

}  // namespace
}  // namespace zeb
