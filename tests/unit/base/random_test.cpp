#include "base/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <vector>

#include "base/scores.h"

namespace zeb {
namespace {

TEST(random_sequence_test, keeps_first_and_masked_entries_in_their_places) {
  constexpr int n = 40;
  std::vector<std::uint8_t> mask(n);
  for (std::size_t i = 0; i < mask.size(); ++i) mask[i] = i % 3 != 1;
  std::vector<int> masked;  // descending
  for (int i = n - 1; i >= 0; --i) {
    if (!mask[static_cast<std::size_t>(i)]) masked.push_back(i);
  }
  const std::size_t taking_part = n - masked.size();
  for (unsigned seed = 0; seed < 20; ++seed) {
    random_generator generator(seed);
    std::vector<int> order(n);
    random_sequence(generator, n, order, 6, mask);
    EXPECT_EQ(order[0], 6) << seed;
    EXPECT_TRUE(std::equal(masked.begin(), masked.end(), order.begin() + taking_part)) << seed;
    std::vector<int> sorted = order;
    std::sort(sorted.begin(), sorted.end());
    std::vector<int> all(n);
    std::iota(all.begin(), all.end(), 0);
    EXPECT_EQ(sorted, all) << seed;
  }
}

TEST(random_sequence_test, draws_on_where_the_generator_stands) {
  random_generator generator(5);
  std::vector<int> one(30);
  std::vector<int> other(30);
  random_sequence(generator, 30, one, -1, {});
  random_sequence(generator, 30, other, -1, {});
  EXPECT_NE(one, other);
  generator.seed(5);
  random_sequence(generator, 30, other, -1, {});
  EXPECT_EQ(one, other);
}

TEST(random_generator_test, seeds_that_differ_by_one_share_no_part_of_their_sequences) {
  std::set<int> seen;
  constexpr int draws = 200;
  for (unsigned seed = 0; seed < 50; ++seed) {
    random_generator generator(seed);
    for (int i = 0; i < draws; ++i) seen.insert(generator.draw());
  }
  EXPECT_GE(seen.size(), 50U * draws - 5);  // a few may be the same by chance
}

TEST(scores_test, fractions_within_the_tolerance_are_one_score) {
  constexpr double score = 12.5;
  constexpr double nearly = score + score_tolerance / 2;
  constexpr double more = score + 2 * score_tolerance;
  EXPECT_TRUE(is_same_score(score, nearly, score_kind::fractional));
  EXPECT_FALSE(is_same_score(score, nearly, score_kind::whole));
  EXPECT_FALSE(is_better_score(score, nearly, score_kind::fractional));
  EXPECT_TRUE(is_within_bound(nearly, score, score_kind::fractional));
  EXPECT_TRUE(is_better_score(score, more, score_kind::fractional));
  EXPECT_FALSE(is_within_bound(more, score, score_kind::fractional));
}

}  // namespace
}  // namespace zeb
