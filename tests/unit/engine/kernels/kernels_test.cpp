// Kernels of every width against the 32-bit ones, on random words, for every bound that matters.
#include "engine/kernels/kernels.h"
#include "engine/kernels/kernel_choice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace zeb {
namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// Word arrays of random sets and weights, in all four groups.
class operands {
 public:
  explicit operands(std::mt19937& g, int count) : count_(count) {
    const auto blocks = [&] { return words_per_block * static_cast<int>(g() % 4); };
    layout.end0 = blocks();
    layout.end1 = layout.end0 + blocks();
    layout.end2 = layout.end1 + blocks();
    layout.end3 = layout.end2 + blocks();
    if (layout.end3 > 0)
      layout.head = words_per_block * static_cast<int>(g() % at(layout.end3 / words_per_block));
    store_.resize(at(count * layout.end3 + words_per_block));
    auto* start = reinterpret_cast<std::uintptr_t*>(store_.data());
    base = store_.data() + (64 - reinterpret_cast<std::uintptr_t>(start) % 64) % 64 / sizeof(word);
    // Between sets with few states and sets that nearly always meet.
    const int density = 1 + static_cast<int>(g() % 3);
    for (int i = 0; i < count * layout.end3; ++i) {
      base[i] = static_cast<word>(g());
      for (int d = 1; d < density; ++d) base[i] |= static_cast<word>(g());
    }
    make_weights(g);
  }

  const word* row(int i) const { return base + at(i) * at(layout.end3); }
  int count() const { return count_; }

  kernel_layout layout;
  word* base = nullptr;

 private:
  void make_weights(std::mt19937& g) {
    const int most = g() % 2 ? 3 : 200;
    constexpr int digits = 8;
    word_weight_.resize(at(layout.end3));
    for (std::int32_t& w : word_weight_) w = static_cast<std::int32_t>(g() % at(most));
    planes_.assign(at(digits * layout.end3), 0);
    const auto add = [&](int first, int end, int width, bool flag_low) {
      for (int w = first; w < end; ++w)
        for (int bit = 0; bit < 32; bit += width) {
          field_weight_.push_back(static_cast<std::int32_t>(g() % at(most)));
          const word flag = word{1} << (flag_low ? bit : bit + width - 1);
          for (int d = 0; d < digits; ++d)
            if (field_weight_.back() >> d & 1) planes_[at(d * layout.end3 + w)] |= flag;
        }
    };
    add(0, layout.end0, 2, true);
    add(layout.end0, layout.end1, 4, false);
    add(layout.end1, layout.end2, 8, false);
    add(layout.end2, layout.end3, 32, false);
    // Aligned, as the loops over planes need.
    aligned_.resize(planes_.size() + words_per_block);
    word* const p =
        aligned_.data() +
        (64 - reinterpret_cast<std::uintptr_t>(aligned_.data()) % 64) % 64 / sizeof(word);
    std::copy(planes_.begin(), planes_.end(), p);
    layout.weight_planes = p;
    layout.plane_count = digits;
    layout.field_weight = field_weight_.data();
    layout.word_weight = word_weight_.data();
  }

  int count_;
  std::vector<word> store_, planes_, aligned_;
  std::vector<std::int32_t> word_weight_, field_weight_;
};

/// What a scan must find: the first within the bound, and its cost.
void expect_scan(const kernel_slots& k, const operands& o, const std::vector<std::int32_t>& items,
                 std::int32_t bound, const std::vector<std::int32_t>& costs) {
  const int count = static_cast<int>(items.size());
  for (int from = 0; from <= count;) {
    int wanted = from;
    while (wanted < count && costs[at(wanted)] > bound) ++wanted;
    std::int32_t cost = -1;
    const int found = k.scan_pairs(o.row(0), o.base, at(o.layout.end3), items.data(), from, count,
                                   o.layout, bound, &cost);
    ASSERT_EQ(found, wanted) << "from " << from << " bound " << bound;
    if (found < count) {
      ASSERT_EQ(cost, costs[at(found)]);
    }
    from = found + 1;
  }
}

void compare_widths(std::mt19937& g, scoring_mode mode) {
  const operands o(g, 12);
  const kernel_slots reference = kernels_of_width(32, mode);
  constexpr std::int32_t no_limit = 2147483647;
  std::vector<std::int32_t> items;
  std::vector<std::int32_t> costs;
  for (int i = 1; i < o.count(); ++i) {
    items.push_back(i);
    costs.push_back(reference.cost_pair(o.row(0), o.row(i), o.layout, no_limit));
  }
  for (const int bits : {32, 64, 256, 512}) {
    if (bits > widest_kernels()) continue;
    // Words of one weight are costed by the digits of field weights in wider forms; these operands
    // have unlike ones.
    if (mode == scoring_mode::word_weights && bits > 32) continue;
    const kernel_slots k = kernels_of_width(bits, mode);
    for (const std::int32_t bound :
         {costs[0], costs[0] - 1, costs[0] + 1, costs[0] / 2, 0, -1, no_limit}) {
      const std::int32_t cost = k.cost_pair(o.row(0), o.row(1), o.layout, bound);
      if (costs[0] <= bound)
        ASSERT_EQ(cost, costs[0]) << bits << " bits, bound " << bound;
      else
        ASSERT_GT(cost, bound) << bits << " bits";
      ASSERT_NO_FATAL_FAILURE(expect_scan(k, o, items, bound, costs)) << bits << " bits";
    }
  }
}

TEST(kernels, all_widths_agree_for_every_bound) {
  for (unsigned seed = 1; seed <= 2000; ++seed) {
    std::mt19937 g(seed);
    for (const scoring_mode mode :
         {scoring_mode::uniform, scoring_mode::per_character, scoring_mode::word_weights})
      ASSERT_NO_FATAL_FAILURE(compare_widths(g, mode)) << "seed " << seed;
  }
}

}  // namespace
}  // namespace zeb
