#include "trees/drawing/tags.h"

#include <gtest/gtest.h>

#include "matrix/matrix.h"
#include "support/tree_text.h"

namespace {

using namespace zeb;
using zeb_test::tree_of;

class tags_test : public ::testing::Test {
 protected:
  void SetUp() override {
    ntax_ = matrix.ntax;
    matrix.ntax = 5;
    clear_tags();
  }
  void TearDown() override {
    clear_tags();
    matrix.ntax = ntax_;
  }
  int ntax_ = 0;
};

TEST_F(tags_test, follow_nodes_through_normalisation_and_groups_through_trees) {
  // Nodes 6 and 7 change places when the tree is normalised.
  std::vector<std::string> texts(9);
  texts[3] = "tip";
  texts[6] = "three-four";
  texts[7] = "one-two";
  set_tag_tree(tree_of("(0 (3 4)(1 2))", 5), texts, "first");
  EXPECT_EQ(tags.tag_texts[6], "one-two");
  EXPECT_EQ(tags.tag_texts[7], "three-four");
  std::vector<std::string> others(9);
  others[3] = "top";
  others[6] = "not in the tag tree";
  others[8] = "again";
  store_drawn_tags(tree_of("(0 (1 (2 (3 4))))", 5), "none", {});
  store_drawn_tags(tree_of("(0 (1 (2 (3 4))))", 5), "second", others);
  EXPECT_EQ(tags.tag_texts[7], "three-four/again");
  EXPECT_EQ(tags.tag_texts[6], "one-two");
  EXPECT_EQ(tags.tag_texts[3], "tip/top");
  EXPECT_EQ(tags.tag_title, "first / second");
}

TEST_F(tags_test, become_numbers_and_symbols_and_back) {
  set_tag_tree(tree_of("(0 (1 2)(3 4))", 5));
  const std::vector<double> values = {-1, -5, 2.5, 0, 7, -3, -4, -2, 9};
  tags_from_numbers(values, true, false);
  EXPECT_EQ(tags.tag_texts,
            std::vector<std::string>({"-", "X", "2.5", "0", "7", "N", " ", "Y", ""}));
  int bad_node = 0;
  std::vector<double> expected = values;
  expected[8] = 0;  // no such node
  EXPECT_EQ(tags_as_numbers(true, false, &bad_node), expected);
  EXPECT_EQ(bad_node, -1);
  tags_as_numbers(false, true, &bad_node);
  EXPECT_EQ(bad_node, 5);
  tags_from_numbers(values, false, true);
  EXPECT_EQ(tags.tag_texts[5], "-3");
  EXPECT_EQ(tags.tag_texts[0], "-");
}

}  // namespace
