#include "language/name_matching.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace zeb {
namespace {

// Edit distance by its definition, over all cells.
int edit_distance(const std::string& a, const std::string& b) {
  std::vector<std::vector<int>> d(a.size() + 1, std::vector<int>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        d[i][j] = static_cast<int>(i + j);
      } else {
        d[i][j] =
            std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + (a[i - 1] != b[j - 1])});
      }
    }
  }
  return d[a.size()][b.size()];
}

TEST(name_matching, known_similarities) {
  EXPECT_DOUBLE_EQ(similarity("mult", "MULT"), 1);
  EXPECT_DOUBLE_EQ(similarity("mult", "malt"), 0.75);
  EXPECT_DOUBLE_EQ(similarity("drosophila", "drosphila"), 1 - 1.0 / 9);
  EXPECT_DOUBLE_EQ(similarity("a", "b"), 0);
  EXPECT_DOUBLE_EQ(similarity("ab", "zzzzzz"), 0);
  EXPECT_DOUBLE_EQ(similarity("", "abc"), 0);
}

TEST(name_matching, equals_the_edit_distance_and_stops_early_only_below_the_threshold) {
  std::mt19937 random(5);
  for (int round = 0; round < 3000; ++round) {
    std::string words[2];
    for (std::string& word : words) {
      word.resize(1 + random() % 12);
      for (char& c : word) c = static_cast<char>('a' + random() % 3);
    }
    const auto shorter = static_cast<double>(std::min(words[0].size(), words[1].size()));
    const double expected = std::max(0.0, 1 - edit_distance(words[0], words[1]) / shorter);
    const double found = similarity(words[0], words[1]);
    ASSERT_DOUBLE_EQ(found, expected) << words[0] << ' ' << words[1];
    ASSERT_DOUBLE_EQ(found, similarity(words[1], words[0]));
    const double cut = similarity(words[0], words[1], 0.6);
    ASSERT_TRUE(cut == found || (cut == 0 && found < 0.6)) << words[0] << ' ' << words[1];
  }
}

TEST(name_matching, nobody_is_asked_without_a_terminal) {
  EXPECT_TRUE(ask_match("Tri", "triops", "taxon"));
  EXPECT_FALSE(ask_match("trp", "triops", "taxon"));
  EXPECT_FALSE(ask_match("", "triops", "taxon"));
}

}  // namespace
}  // namespace zeb
