#include "engine/wide/value_ranges.h"

#include <algorithm>

#include "base/indices.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

constexpr int highest_value = 65535;

int low_of(word range) { return static_cast<int>(range & 0xffffU); }
int high_of(word range) { return static_cast<int>(range >> 16); }
word range_of(int low, int high) { return static_cast<word>(low) | static_cast<word>(high) << 16; }
int gap_between(word a, word b) {
  return std::max({0, low_of(a) - high_of(b), low_of(b) - high_of(a)});
}
word span_of(word a, word b) {
  return range_of(std::min(low_of(a), low_of(b)), std::max(high_of(a), high_of(b)));
}

bool takes(int character) { return matrix.characters[at(character)].is_continuous != 0; }
wide_room room(const wide_character&) { return {2, 1, 1}; }
bool is_rooted(const wide_character&) { return false; }

int encode(const wide_character& c, int taxon, word* down) {
  const std::uint32_t states = cell(taxon, c.character);
  const word range = says_nothing(c.character, states) ? range_of(0, highest_value) : word{states};
  down[c.down_at] = down[c.down_at + 1] = range;
  return 0;
}

void down(wide_characters all, const word* left, const word* right, word* own,
          std::int64_t* steps) {
  for (std::size_t i = 0; i < all.size(); ++i) {
    const int p = all[i].down_at;
    const word a = left[p];
    const word b = right[p];
    const int inner_low = std::max(low_of(a), low_of(b));
    const int inner_high = std::min(high_of(a), high_of(b));
    own[p] = range_of(std::min(inner_low, inner_high), std::max(inner_low, inner_high));
    own[p + 1] = span_of(a, b);
    steps[i] += std::max(0, inner_low - inner_high);
  }
}

void top(wide_characters all, const word* down, word* final, bool, std::int64_t*) {
  for (const wide_character& c : all) final[c.final_at] = down[c.down_at];
}

/// The ancestor's ends, as far as the node may follow them without loss.
word followed(word above, word best, word reach) {
  return range_of(std::clamp(low_of(above), low_of(reach), high_of(best)),
                  std::clamp(high_of(above), low_of(best), high_of(reach)));
}

void final(wide_characters all, const word* above, const word* down, word* own) {
  for (const wide_character& c : all)
    own[c.final_at] = followed(above[c.final_at], down[c.down_at], down[c.down_at + 1]);
}

void branch(wide_characters all, const word* above, const word*, const word* down, word* own) {
  for (const wide_character& c : all)
    own[c.branch_at] = span_of(above[c.final_at],
                               followed(above[c.final_at], down[c.down_at], down[c.down_at + 1]));
}

void empty(wide_characters all, word* cluster) {
  for (const wide_character& c : all) cluster[c.branch_at] = range_of(highest_value, 0);
}
void widen(wide_characters all, const word* branch, word* cluster) {
  for (const wide_character& c : all)
    cluster[c.branch_at] = span_of(cluster[c.branch_at], branch[c.branch_at]);
}

word range_of_side(const wide_character& c, wide_operand side) {
  switch (side.end) {
    case join_end::root:
      return side.words[c.down_at];
    case join_end::final:
      return side.words[c.final_at];
    default:
      return side.words[c.branch_at];
  }
}

void join(wide_characters all, wide_operand clip, wide_operand main, std::int64_t* steps) {
  for (std::size_t i = 0; i < all.size(); ++i)
    steps[i] += gap_between(range_of_side(all[i], clip), range_of_side(all[i], main));
}

std::int64_t join_sum(wide_characters all, wide_operand clip, wide_operand main,
                      std::int64_t bound) {
  std::int64_t sum = 0;
  for (const wide_character& c : all) {
    const int gap = gap_between(range_of_side(c, clip), range_of_side(c, main));
    if (gap == 0) continue;
    sum += std::int64_t{c.weight} * gap;
    if (sum > bound) return sum;
  }
  return sum;
}

bool stays(wide_characters all, int rule, const word* above, const word* down, const word* final) {
  return std::any_of(all.begin(), all.end(), [&](const wide_character& c) {
    const word from = above[c.final_at];
    const word own = rule == 1 ? down[c.down_at] : final[c.final_at];
    if (rule == 1) return low_of(from) < low_of(own) || high_of(from) > high_of(own);
    return rule == 2 ? from != own : gap_between(from, own) > 0;
  });
}

}  // namespace

const wide_kind value_ranges = {.name = "ranges",
                                .unit = 0.001,
                                .together = 10,
                                .takes = takes,
                                .model = nullptr,
                                .room = room,
                                .is_rooted = is_rooted,
                                .encode = encode,
                                .down = down,
                                .top = top,
                                .final = final,
                                .branch = branch,
                                .empty = empty,
                                .widen = widen,
                                .join = join,
                                .join_sum = join_sum,
                                .stays = stays,
                                .rooting = nullptr};

}  // namespace zeb
