// The buffer: growth keeps trees and groups, also while a command's temporary memory is in the way.
#include "trees/tree_store.h"

#include <gtest/gtest.h>

#include "base/arena.h"
#include "base/command.h"
#include "base/errors.h"
#include "support/random_trees.h"
#include "support/text_session.h"
#include "trees/branch_labels.h"
#include "trees/tree_groups.h"

namespace zeb {
namespace {

constexpr int ntax = 12;

void fill(int count) {
  std::mt19937 random(8);
  for (int t = 0; t < count; ++t) {
    zeb_test::record tree = zeb_test::random_tree(ntax, random, 0.2, 0);
    tree[1] = 1000 + t;  // a mark that tells the trees apart
    std::ranges::copy(tree, take_slot().begin());
    if (t % 3 == 0) add_to_tree_group(store.ntrees - 1, 5);
  }
}

void expect_trees(int count) {
  ASSERT_EQ(store.ntrees, count);
  for (int t = 0; t < count; ++t) {
    EXPECT_EQ(stored_tree(t)[1], 1000 + t);
    EXPECT_EQ(in_tree_group(t, 5), t % 3 == 0) << t;
  }
}

TEST(tree_store, capacity_changes_keep_trees_groups_and_memory) {
  zeb_test::text_session session(ntax);
  const jump_context context;
  fill(50);
  const std::size_t before = arena_free();
  for (const int capacity : {1000, 60, 200, 50, 100}) {
    ASSERT_TRUE(set_maxtrees(capacity, false));
    EXPECT_EQ(store.maxtrees, capacity);
    expect_trees(50);
  }
  EXPECT_EQ(arena_free(), before);
  {
    const fixed_capacity_scope fixed;
    EXPECT_FALSE(set_maxtrees(200, false));
    EXPECT_EQ(store.maxtrees, 100);
  }
  EXPECT_FALSE(set_maxtrees(100'000'000, false, true));
  EXPECT_THROW(set_maxtrees(100'000'000, false), command_unwinding);
  expect_trees(50);
  ASSERT_TRUE(set_maxtrees(20, false));
  expect_trees(20);
}

TEST(tree_store, labels_take_a_bounded_part_of_memory) {
  zeb_test::text_session session(ntax);
  const jump_context context;
  fill(3);
  std::vector<branch_label> labels(static_cast<std::size_t>(store.nnodes));
  labels[0].label.assign(arena.size / 2, 'x');
  label_tree(0, labels);
  EXPECT_TRUE(labels_of_tree(0).empty());
  EXPECT_TRUE(label_memory.full);
  labels[0].label = "a clade";
  label_tree(1, labels);
  EXPECT_EQ(labels_of_tree(1)[0].label, "a clade");
  EXPECT_GT(label_memory.bytes, 0U);
  label_tree(1, {});
  EXPECT_EQ(label_memory.bytes, 0U);
}

TEST(tree_store, growing_beside_memory_in_use_harms_neither) {
  zeb_test::text_session session(ntax);
  fill(100);
  int later_lock = 0;
  const std::span<int> locked = alloc_low<int>(1000);
  lock(&later_lock);
  const std::span<int> temporary = alloc_low<int>(1000);
  std::fill(locked.begin(), locked.end(), 66);
  std::fill(temporary.begin(), temporary.end(), 77);
  // Three times, so that the memory taken first is outgrown.
  for (int capacity = 110; capacity <= 1010; capacity += 450) {
    ASSERT_TRUE(set_maxtrees(capacity, false));
    EXPECT_EQ(store.maxtrees, capacity);
    expect_trees(100);
  }
  EXPECT_EQ(std::count(locked.begin(), locked.end(), 66), 1000);
  EXPECT_EQ(std::count(temporary.begin(), temporary.end(), 77), 1000);
  std::ranges::copy(stored_tree(0), take_slot(true).begin());
  stored_tree(100)[1] = 1100;
  command_is_over();
  EXPECT_EQ(later_lock, 0);
  EXPECT_TRUE(store.unsettled.empty());
  ASSERT_EQ(store.ntrees, 101);
  EXPECT_EQ(stored_tree(100)[1], 1100);
  std::vector<std::uint8_t> all_but_last(101, 1);
  all_but_last[100] = 0;
  select_trees(store, all_but_last);
  expect_trees(100);
}

TEST(tree_store, the_vault_lies_apart_and_forbids_growth) {
  zeb_test::text_session session(ntax);
  const jump_context context;
  fill(10);
  set_maxtrees_and_vault(30, 3);
  expect_trees(10);
  std::ranges::copy(stored_tree(4), vault_tree(2).begin());
  EXPECT_THROW(set_maxtrees(40, false), command_unwinding);
  expect_trees(10);
  EXPECT_EQ(vault_tree(2)[1], 1004);
  set_maxtrees_and_vault(40, 0);
  expect_trees(10);
}

}  // namespace
}  // namespace zeb
