// Tree groups beyond one word of bits.
#include "trees/tree_groups.h"

#include <gtest/gtest.h>

#include "support/text_session.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr int ntax = 12;

/// More groups than a word of bits holds, for data read while it exists.
class seventy_groups {
 public:
  seventy_groups() { set_tree_group_limit(70); }
  ~seventy_groups() { set_tree_group_limit(32); }
  seventy_groups(const seventy_groups&) = delete;
  seventy_groups& operator=(const seventy_groups&) = delete;
};

TEST(tree_groups, automatic_groups_go_round) {
  zeb_test::text_session session(ntax);
  for (int t = 0; t < 34; ++t) {
    take_slot();
    group_automatically(t, t + 1, "auto");
  }
  EXPECT_EQ(tree_groups.next_automatic, 2);
  EXPECT_TRUE(in_tree_group(33, 1));
  EXPECT_FALSE(in_tree_group(1, 1));
  EXPECT_TRUE(in_tree_group(2, 2));
}

TEST(tree_groups, groups_in_further_words_are_groups_of_their_own) {
  const seventy_groups many;
  zeb_test::text_session session(ntax);
  for (int t = 0; t < 3; ++t) take_slot();
  for (const int group : {1, 33, 65}) add_to_tree_group(group / 32, group);
  for (const int group : {1, 33, 65}) {
    EXPECT_TRUE(tree_group_defined(group)) << group;
    for (int t = 0; t < 3; ++t) EXPECT_EQ(in_tree_group(t, group), t == group / 32) << group;
  }
  define_tree_group(33, "middle");
  undefine_tree_group(33);
  EXPECT_FALSE(tree_group_defined(33));
  EXPECT_FALSE(in_tree_group(1, 33));
  EXPECT_EQ(tree_groups.names[33], "Group_33");
  EXPECT_TRUE(in_tree_group(0, 1) && in_tree_group(2, 65));
  EXPECT_FALSE(tree_group_defined(70));
}

}  // namespace
}  // namespace zeb
