#include "search/moves/relative_fit.h"

#include <vector>

#include "engine/joining.h"
#include "engine/wide/wide_costs.h"

namespace zeb {
namespace {

/// Fields of one group whose sets don't meet, as the lowest bit of each.
word failed_fields(int group, word x) {
  switch (group) {
    case 0:
      return ~(x >> 1 | x) & 0x55555555U;
    case 1:
      return (~(((x & 0x77777777U) + 0x77777777U) | x) & 0x88888888U) >> 3;
    case 2:
      return (~(((x & 0x7f7f7f7fU) + 0x7f7f7f7fU) | x) & 0x80808080U) >> 7;
    default:
      return x ? 0 : 1;
  }
}

/// Adds up what each character gains or loses; the fields of a character lie side by side.
struct evidence {
  double for_home = 0;
  double for_other = 0;
  std::int32_t character = -1;
  double difference = 0;  // of that character so far

  void add(std::int32_t of_character, double cost) {
    if (of_character != character) settle();
    character = of_character;
    difference += cost;
  }
  void settle() {
    (difference > 0 ? for_home : for_other) += difference > 0 ? difference : -difference;
    difference = 0;
  }
};

void add_wide_characters(const search_data& data, const clip_place& home, const clip_place& other,
                         evidence& sum) {
  std::vector<double> at_home;
  std::vector<double> elsewhere;
  wide_join_costs(data, home.clip, home.main, at_home);
  wide_join_costs(data, other.clip, other.main, elsewhere);
  for (std::size_t i = 0; i < at_home.size(); ++i) {
    sum.settle();
    sum.difference = elsewhere[i] - at_home[i];
  }
}

}  // namespace

double relative_fit_difference(const search_data& data, const clip_place& home,
                               const clip_place& other) {
  const word* const home_clip = packed_words(data, home.clip);
  const word* const home_branch = packed_words(data, home.main);
  const word* const other_clip = packed_words(data, other.clip);
  const word* const other_branch = packed_words(data, other.main);
  evidence sum;
  std::size_t before = 0;  // fields of the groups before, as in `step_cost`
  for (int group = 0; group < packing_groups; ++group) {
    const auto g = static_cast<std::size_t>(group);
    for (int w = data.group_start[g]; w < data.group_start[g + 1]; ++w) {
      const word at_home = failed_fields(group, home_clip[w] & home_branch[w]);
      const word elsewhere = failed_fields(group, other_clip[w] & other_branch[w]);
      const std::size_t first = static_cast<std::size_t>(w - data.group_start[g]) *
                                static_cast<std::size_t>(fields_per_word[g]);
      for (word rest = at_home ^ elsewhere; rest; rest &= rest - 1) {
        const int bit = __builtin_ctz(rest);
        const std::size_t field = first + static_cast<std::size_t>(bit / field_bits[g]);
        const field_record& record = data.fields[g][field];
        const double cost = data.implied_on ? data.step_cost[before + field] : record.weight;
        sum.add(record.character, elsewhere >> bit & 1U ? cost : -cost);
      }
    }
    before += data.fields[g].size();
  }
  if (data.has_wide) add_wide_characters(data, home, other, sum);
  sum.settle();
  return sum.for_home > 0 ? (sum.for_home - sum.for_other) / sum.for_home : 0.0;
}

}  // namespace zeb
