#include "search/moves/relative_fit.h"

#include <vector>

#include "engine/fit/step_costs.h"
#include "engine/joining.h"
#include "engine/wide/wide_costs.h"
#include "search/landmarks/landmark_moves.h"
#include "search/landmarks/searched_landmarks.h"

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

/// Steps of one character in two joinings, or what they add to the sum of one set.
template <class number>
struct gains {
  number at_home{};
  number elsewhere{};
};

/// Adds up what each character gains or loses, and each set of them; the fields of a character lie
/// side by side.
class evidence {
 public:
  explicit evidence(const search_data& data) : data_(data), sets_(data.fit_sets.size()) {}

  /// A field that costs a step at home or elsewhere; `number` is its place in arrays by field.
  void add_field(const field_record& record, std::size_t number, bool at_home, bool elsewhere) {
    if (record.character != character_) settle_character();
    character_ = record.character;
    weight_ = record.weight;
    if (data_.implied_on) counter_ = data_.counter_of[number];
    steps_.at_home += at_home;
    steps_.elsewhere += elsewhere;
  }
  void add_wide_characters(const clip_place& home, const clip_place& other) {
    std::vector<std::int64_t> at_home;
    std::vector<std::int64_t> elsewhere;
    wide_join_steps(data_, home.clip, home.main, at_home);
    wide_join_steps(data_, other.clip, other.main, elsewhere);
    std::size_t i = 0;
    for (const wide_part& part : data_.wide.parts)
      for (const wide_character& c : part.characters) {
        add(data_.implied_on ? c.set : -1, cost_of_wide_steps(data_, part, c, at_home[i]),
            cost_of_wide_steps(data_, part, c, elsewhere[i]));
        ++i;
      }
  }
  void add_landmarks(const clip_place& home, const clip_place& other, bool in_full) {
    searched_landmarks& landmarks = *landmarks_in(data_);
    const landmark_moves& moves = *landmarks.moves_in_work();
    const auto costs_at = [&](const clip_place& place) {
      const int u = place.clip.number;
      const int v = place.main.number;
      return in_full ? landmarks.costs_by_configuration(data_, moves.joined_ancestors(u, v))
                     : moves.costs_by_configuration(u, v);
    };
    const std::vector<double> at_home = costs_at(home);
    const std::vector<double> elsewhere = costs_at(other);
    for (std::size_t i = 0; i < at_home.size(); ++i) add(-1, at_home[i], elsewhere[i]);
  }
  double difference() {
    settle_character();
    for (std::size_t s = 0; s < sets_.size(); ++s) {
      const set_counter& set = data_.fit_sets[s];
      add(-1, fit_at(set.curve, set.sum + sets_[s].at_home),
          fit_at(set.curve, set.sum + sets_[s].elsewhere));
    }
    return for_home_ > 0 ? (for_home_ - for_other_) / for_home_ : 0.0;
  }

 private:
  void settle_character() {
    if (counter_ >= 0) {
      const fit_counter& c = data_.counters[static_cast<std::size_t>(counter_)];
      const auto cost = [&c](int steps) {
        return c.weight * (c.fit[c.steps + steps] - c.fit[c.steps]);
      };
      add(c.set, cost(steps_.at_home), cost(steps_.elsewhere));
    } else {
      add(-1, weight_ * steps_.at_home, weight_ * steps_.elsewhere);
    }
    steps_ = {};
  }
  void add(std::int32_t set, double at_home, double elsewhere) {
    if (set >= 0) {
      sets_[static_cast<std::size_t>(set)].at_home += at_home;
      sets_[static_cast<std::size_t>(set)].elsewhere += elsewhere;
      return;
    }
    const double more = elsewhere - at_home;
    (more > 0 ? for_home_ : for_other_) += more > 0 ? more : -more;
  }

  const search_data& data_;
  std::int32_t character_ = -1;  // met last, with its steps so far
  std::int32_t weight_ = 0;
  std::int32_t counter_ = -1;
  gains<int> steps_;
  std::vector<gains<double>> sets_;
  double for_home_ = 0;
  double for_other_ = 0;
};

}  // namespace

double relative_fit_difference(const search_data& data, const clip_place& home,
                               const clip_place& other, bool in_full) {
  const word* const home_clip = packed_words(data, home.clip);
  const word* const home_branch = packed_words(data, home.main);
  const word* const other_clip = packed_words(data, other.clip);
  const word* const other_branch = packed_words(data, other.main);
  evidence sum(data);
  std::size_t before = 0;  // fields of the groups before
  for (int group = 0; group < packing_groups; ++group) {
    const auto g = static_cast<std::size_t>(group);
    for (int w = data.group_start[g]; w < data.group_start[g + 1]; ++w) {
      const word at_home = failed_fields(group, home_clip[w] & home_branch[w]);
      const word elsewhere = failed_fields(group, other_clip[w] & other_branch[w]);
      const std::size_t first = static_cast<std::size_t>(w - data.group_start[g]) *
                                static_cast<std::size_t>(fields_per_word[g]);
      for (word rest = at_home | elsewhere; rest; rest &= rest - 1) {
        const int bit = __builtin_ctz(rest);
        const std::size_t field = first + static_cast<std::size_t>(bit / field_bits[g]);
        sum.add_field(data.fields[g][field], before + field, at_home >> bit & 1U,
                      elsewhere >> bit & 1U);
      }
    }
    before += data.fields[g].size();
  }
  if (data.has_wide) sum.add_wide_characters(home, other);
  if (data.whole) sum.add_landmarks(home, other, in_full);
  return sum.difference();
}

}  // namespace zeb
