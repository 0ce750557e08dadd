// The compact form: bytes worked out by hand, round trips, and streams gone bad.
#include "trees/notation/compact_format.h"

#include <gtest/gtest.h>

#include "support/random_trees.h"

namespace zeb {
namespace {

using zeb_test::random_tree;
using zeb_test::record;

std::vector<std::uint8_t> written(const record& tree, int ntax) {
  std::vector<std::uint8_t> bytes;
  append_compact_tree(tree, ntax, bytes);
  return bytes;
}

void expect_round_trip(record tree, int ntax, const char* what) {
  normalise_tree(tree, ntax);
  const std::vector<std::uint8_t> bytes = written(tree, ntax);
  ASSERT_EQ(compact_tree_bytes(bytes, ntax), bytes.size());
  record back(tree.size(), 0);
  ASSERT_TRUE(compact_reader(ntax).read(bytes, back)) << what;
  const auto used = tree[static_cast<std::size_t>(ntax)];
  EXPECT_TRUE(std::equal(tree.begin(), tree.begin() + used, back.begin())) << what << ' ' << ntax;
}

TEST(compact_format, heads) {
  EXPECT_EQ(compact_head(5), (std::vector<std::uint8_t>{5, 0}));
  EXPECT_EQ(compact_head(16383), (std::vector<std::uint8_t>{0xff, 0x3f}));
  EXPECT_EQ(compact_head(16384), (std::vector<std::uint8_t>{0, 0, 0, 0x40, 0, 0}));
  for (const int ntax : {4, 16383, 16384, 100000}) {
    const auto head = compact_head(ntax);
    EXPECT_EQ(read_compact_head(head).ntax, ntax);
    EXPECT_EQ(read_compact_head(head).bytes, head.size());
  }
  EXPECT_EQ(read_compact_head(std::vector<std::uint8_t>{'t', 'r', 'e', 'a', 'd', ' '}).ntax, -1);
}

TEST(compact_format, bits_of_small_trees) {
  // Terminal 2 joins beside 0 (index 0, flag 1: 001), so does 3: 001 001.
  EXPECT_EQ(written({4, 4, 4, 4, 5, 0, 0}, 4), (std::vector<std::uint8_t>{1, 0, 0x09, 0}));
  // (0 (1 (2 3))): 2 on the branch of 1 (010); then the list has 5 nodes, so 4 bits, and 3 goes on
  // the branch of 2, index 3 (0110).
  EXPECT_EQ(written({4, 5, 6, 6, 7, 4, 5}, 4), (std::vector<std::uint8_t>{1, 0, 0x32, 0}));
  // ((0 1 2) 3): 2 joins beside 0, then 3 joins below the root, index 2 of four (100).
  EXPECT_EQ(written({5, 5, 5, 4, 6, 4, 0}, 4), (std::vector<std::uint8_t>{1, 0, 0x21, 0}));
}

TEST(compact_format, a_polytomy_is_told_by_its_first_descendant) {
  // ((0 1) 2 (3 4 5)), nodes 6, 7, 8. 0 and 1 under 6; 2 on the branch of 6 (index 2): 100, so L is
  // 0 1 6 2 r; 3 beside 2 (index 3; the other sister has index 2, which is smaller): 0101; then 4
  // on the branch of 3 (index 5 of 6): 1010; then 5 beside 3 (index 5 of 8): 1011.
  record tree{7, 7, 6, 8, 8, 8, 9, 6, 6, 0, 0};
  normalise_tree(tree, 6);
  const std::uint32_t bits = 4U | 5U << 3 | 10U << 7 | 11U << 11;
  EXPECT_EQ(written(tree, 6), (std::vector<std::uint8_t>{1, 0, static_cast<std::uint8_t>(bits),
                                                         static_cast<std::uint8_t>(bits >> 8)}));
}

TEST(compact_format, round_trips) {
  std::mt19937 random(4);
  for (int round = 0; round < 300; ++round) {
    const int ntax = 4 + static_cast<int>(random() % 60);
    expect_round_trip(random_tree(ntax, random, 0.1 * (round % 11), 0), ntax, "random");
  }
  for (const int ntax : {500, 16383, 16384, 20000}) {
    expect_round_trip(random_tree(ntax, random, 0, 0), ntax, "binary");
    expect_round_trip(random_tree(ntax, random, 0.3, 0), ntax, "polytomies");
    expect_round_trip(random_tree(ntax, random, 1, 0), ntax, "bush");
    expect_round_trip(zeb_test::caterpillar(ntax), ntax, "caterpillar");
  }
}

TEST(compact_format, damaged_streams_are_refused_or_give_valid_trees) {
  std::mt19937 random(5);
  for (int round = 0; round < 5000; ++round) {
    const int ntax = 4 + static_cast<int>(random() % 12);
    record tree = random_tree(ntax, random, 0.3, 0);
    normalise_tree(tree, ntax);
    std::vector<std::uint8_t> bytes = written(tree, ntax);
    bytes[2 + random() % (bytes.size() - 2)] ^= static_cast<std::uint8_t>(1U << random() % 8);
    if (round % 3 == 0) bytes.resize(bytes.size() - 2);
    record back(tree.size(), 0);
    if (compact_reader(ntax).read(bytes, back)) {
      EXPECT_EQ(check_tree_record(back, ntax), "") << round;
    }
  }
}

}  // namespace
}  // namespace zeb
