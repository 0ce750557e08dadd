// Trees as text: what is written reads back the same, and bad text harms nothing.
#include <gtest/gtest.h>

#include "base/command.h"
#include "base/errors.h"
#include "matrix/matrix.h"
#include "support/random_trees.h"
#include "support/text_session.h"
#include "trees/drawing/tags.h"
#include "trees/notation/parenthetical_writer.h"
#include "trees/notation/tree_text_reader.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using zeb_test::random_tree;
using zeb_test::record;

record read_one(tree_text_reader& reader) {
  reader.read_tree();
  record tree(static_cast<std::size_t>(matrix.nnodes), 0);
  reader.tree().finish(tree, false);
  return tree;
}

bool same_tree(const record& a, const record& b) {
  const auto ntax = static_cast<std::size_t>(matrix.ntax);
  return a[ntax] == b[ntax] && std::equal(a.begin(), a.begin() + a[ntax], b.begin());
}

TEST(parenthetical, round_trips_by_number_and_by_name) {
  std::mt19937 random(6);
  for (const int ntax : {4, 7, 40, 1000, 20000}) {
    zeb_test::text_session session(ntax);
    tree_text_reader reader(ntax);
    for (int round = 0; round < (ntax > 500 ? 3 : 60); ++round) {
      record tree = random_tree(ntax, random, 0.1 * (round % 5), round % 2 * 0.2);
      normalise_tree(tree, ntax);
      matrix.use_taxon_names = round % 3 == 0;
      session.type(stored_tree_text(tree) + ";");
      EXPECT_TRUE(same_tree(read_one(reader), tree)) << ntax << " round " << round;
    }
  }
}

TEST(parenthetical, depth_needs_no_stack) {
  constexpr int ntax = 100000;
  zeb_test::text_session session(ntax);
  tree_text_reader reader(ntax);
  const record tree = zeb_test::caterpillar(ntax);
  session.type(stored_tree_text(tree) + "*");
  EXPECT_TRUE(same_tree(read_one(reader), tree));
}

TEST(parenthetical, notations_of_one_tree) {
  zeb_test::text_session session(6);
  tree_text_reader reader(6);
  const auto tree_of = [&](const char* text) {
    session.type(text);
    return read_one(reader);
  };
  const record expected = tree_of("(0 (1 2) (3 4 5));");
  const char* same[] = {"(0,(1,2),(3,4,5));",      "0 (1 2) (3 4 5);",
                        "((0 (1 2) ((3 4 5))));",  "(0 (1 () 2) (3 4 5));",
                        "(T0(T1 t2)(t3 T4(T5)));", "(0 (1 2) (3 4 5)));",
                        "(0 (1 2)) (3 4 5));",     "\n( 0\t( 1 2 )( 3 4 5 ) ) ;"};
  for (const char* text : same) EXPECT_TRUE(same_tree(tree_of(text), expected)) << text;
  EXPECT_TRUE(same_tree(tree_of("(T...);"), tree_of("(0 1 2 3 4 5);")));

  // Copies of a clade of tree 0.
  std::ranges::copy(expected, take_slot().begin());
  const int clade = expected[3];
  EXPECT_TRUE(same_tree(tree_of(("(0 1 2 +0 " + std::to_string(clade) + ");").c_str()),
                        tree_of("(0 1 2 (3 4 5));")));
  EXPECT_TRUE(same_tree(tree_of(("((0 1 2) @0 " + std::to_string(clade) + ");").c_str()),
                        tree_of("((0 1 2) 3 4 5);")));
}

TEST(parenthetical, tags_stay_on_their_nodes) {
  zeb_test::text_session session(5);
  tree_text_reader reader(5);
  session.type("((3=x 4)=b/2\\y 2 (0 1=1 )=long_text );");
  reader.read_tree();
  take_tag_tree(reader, "title");
  EXPECT_EQ(tag_tree_text(), "(2 (0 1=1 )=long_text (3=x 4 )=b/2\\y )");
  session.type(tag_tree_text() + ";");
  EXPECT_TRUE(same_tree(read_one(reader), tags.tag_tree));
  EXPECT_EQ(reader.tags_read().size(), 4U);
  // The tree read is the tag tree; former tags stay on nodes with the same terminals.
  set_tag_adding(true);
  session.type("(3 (4=y (2 (0 1 )=z )));");
  reader.read_tree();
  take_tag_tree(reader, "");
  set_tag_adding(false);
  EXPECT_EQ(tag_tree_text(), "(3=x (4=y (2 (0 1=1 )=long_text/z )))");
}

TEST(parenthetical, random_text_gives_an_error_or_a_valid_tree) {
  constexpr int ntax = 6;
  zeb_test::text_session session(ntax);
  const jump_context context;
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  std::mt19937 random(7);
  const std::string_view alphabet = "((((()))))0123456789 T,,@+=.{}*;'[]:\n-ax";
  int trees = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string text = "(";
    const auto length = random() % 40;
    for (std::size_t i = 0; i < length; ++i) text += alphabet[random() % alphabet.size()];
    if (round % 2 == 0) {
      record tree = random_tree(ntax, random, 0.2, 0);
      normalise_tree(tree, ntax);
      text = stored_tree_text(tree);
      text[random() % text.size()] = alphabet[random() % alphabet.size()];
    }
    session.type(text);
    tree_text_reader reader(ntax);
    try {
      const record tree = read_one(reader);
      if (terminals_in(tree, ntax) < 2) continue;
      EXPECT_EQ(check_tree_record(tree, ntax), "") << text;
      ++trees;
    } catch (const command_unwinding&) {
      EXPECT_EQ(store.ntrees, 0);
    }
  }
  testing::internal::GetCapturedStderr();
  testing::internal::GetCapturedStdout();
  EXPECT_GT(trees, 1000);
}

}  // namespace
}  // namespace zeb
