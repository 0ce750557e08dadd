// Slots with and without groups: what moves, moves whole.
#include "trees/tree_slots.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zeb {
namespace {

constexpr int capacity = 6;
constexpr int words = 2;

/// Slot t holds a tree of t's, and the words of its groups are 10 t and 10 t + 1.
class room : public private_slots {
 public:
  explicit room(bool with_groups) : private_slots(capacity, 3) {
    for (int t = 0; t < capacity; ++t) std::ranges::fill(slot_of(*this, t), t);
    if (with_groups) {
      for (std::size_t t = 0; t < capacity; ++t) rows_[t] = bits_ + t * words;
      group_rows = rows_;
      group_words = words;
    }
    set_tree_count(*this, capacity);
    for (std::uint32_t t = 0; t < group_rows.size(); ++t) {
      for (std::uint32_t w = 0; w < words; ++w) group_rows[t][w] = 10 * t + w;
    }
  }

  void expect(const std::vector<int>& order) {
    ASSERT_EQ(ntrees, static_cast<int>(order.size()));
    for (int t = 0; t < ntrees; ++t) {
      const auto place = static_cast<std::size_t>(t);
      EXPECT_EQ(slot_of(*this, t)[2], order[place]);
      if (group_rows.empty()) continue;
      const auto first = static_cast<std::uint32_t>(10 * order[place]);
      EXPECT_EQ(group_rows[place][0], first);
      EXPECT_EQ(group_rows[place][1], first + 1);
    }
  }

 private:
  std::uint32_t bits_[capacity * words] = {};
  std::uint32_t* rows_[capacity] = {};
};

TEST(tree_slots, selecting_and_reordering_move_trees_and_groups_together) {
  for (const bool with_groups : {false, true}) {
    room r(with_groups);
    // Two circles, and one tree that stays.
    reorder_trees(r, std::vector<int>{2, 4, 5, 3, 1, 0});
    r.expect({2, 4, 5, 3, 1, 0});
    select_trees(r, std::vector<std::uint8_t>{0, 1, 1, 0, 0, 1});
    r.expect({4, 5, 0});
    select_trees(r, std::vector<std::uint8_t>(3, 0));
    r.expect({});
  }
}

// What was in a slot before must not make the next tree there a member of a group.
TEST(tree_slots, slots_that_come_into_use_are_in_no_group) {
  room r(true);
  set_tree_count(r, 2);
  set_tree_count(r, capacity);
  EXPECT_EQ(r.group_rows[1][1], 11U);
  for (std::size_t t = 2; t < capacity; ++t) {
    EXPECT_EQ(r.group_rows[t][0] | r.group_rows[t][1], 0U) << t;
  }
}

}  // namespace
}  // namespace zeb
