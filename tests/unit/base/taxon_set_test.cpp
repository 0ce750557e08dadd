#include "base/taxon_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace zeb {
namespace {

// The same as a tree of numbers.
struct pair_of_sets {
  explicit pair_of_sets(int size) : bits(size) {}
  taxon_set bits;
  std::set<int> plain;
};

pair_of_sets random_set(int size, std::mt19937& random) {
  pair_of_sets made(size);
  const auto density = random() % 100;
  for (int i = 0; i < size; ++i) {
    if (random() % 100 >= density) continue;
    made.bits.insert(i);
    made.plain.insert(i);
  }
  return made;
}

std::set<int> members(const taxon_set& set) { return {set.begin(), set.end()}; }

TEST(taxon_set_test, operations_are_those_of_sets) {
  std::mt19937 random(11);
  for (const int size : {1, 5, 63, 64, 65, 128, 200}) {
    for (int round = 0; round < 50; ++round) {
      const pair_of_sets a = random_set(size, random);
      const pair_of_sets b = random_set(size, random);
      std::set<int> both;
      std::set<int> either;
      std::set<int> only_a;
      std::set_intersection(a.plain.begin(), a.plain.end(), b.plain.begin(), b.plain.end(),
                            std::inserter(both, both.end()));
      std::set_union(a.plain.begin(), a.plain.end(), b.plain.begin(), b.plain.end(),
                     std::inserter(either, either.end()));
      std::set_difference(a.plain.begin(), a.plain.end(), b.plain.begin(), b.plain.end(),
                          std::inserter(only_a, only_a.end()));
      EXPECT_EQ(members(a.bits), a.plain) << size;
      EXPECT_EQ(members(a.bits & b.bits), both) << size;
      EXPECT_EQ(members(a.bits | b.bits), either) << size;
      EXPECT_EQ(members(a.bits - b.bits), only_a) << size;
      EXPECT_EQ(a.bits.count(), static_cast<int>(a.plain.size())) << size;
      EXPECT_EQ(a.bits.empty(), a.plain.empty()) << size;
      EXPECT_EQ(a.bits.meets(b.bits), !both.empty()) << size;
      EXPECT_EQ(a.bits.is_subset_of(b.bits), both == a.plain) << size;
      EXPECT_TRUE((a.bits & b.bits).is_subset_of(a.bits)) << size;
      EXPECT_EQ(a.bits.complement().count(), size - a.bits.count()) << size;
      EXPECT_EQ(a.bits.complement().complement(), a.bits) << size;
      EXPECT_EQ(a.bits == b.bits, a.plain == b.plain) << size;
    }
  }
}

TEST(taxon_set_test, no_bit_is_left_beyond_the_last_number) {
  taxon_set all(70);
  all.fill();
  EXPECT_EQ(all.count(), 70);
  EXPECT_EQ(all, taxon_set(70).complement());
  EXPECT_TRUE(all.complement().empty());
  EXPECT_EQ(all.next(70), -1);
  for (int i = 0; i < 70; ++i) all.erase(i);
  EXPECT_EQ(all, taxon_set(70));
  EXPECT_EQ(std::hash<taxon_set>()(all), std::hash<taxon_set>()(taxon_set(70)));
}

TEST(taxon_set_test, flags_become_members) {
  const std::uint8_t flags[] = {0, 1, 0, 4};
  EXPECT_EQ(taxon_set::of_flags(flags), taxon_set(4, {1, 3}));
}

}  // namespace
}  // namespace zeb
