#include "compare/compared_scales.h"

#include <algorithm>
#include <cmath>

#include "base/interrupts.h"
#include "base/message_text.h"

namespace zeb {
namespace {

constexpr double fixable_share = 0.2;  // of the taxa; where as many differ, nothing is asked

// An entry that both sets have.
struct shared_value {
  int taxon;
  entry_range first, second;
};

class scale_comparer {
 public:
  scale_comparer(const comparison_task& task, const comparison& found, int character)
      : task_(task),
        found_(found),
        character_(character),
        other_(found.characters.in_second[at(character)]) {
    for (int t = 0; t < task.first.ntax(); ++t) {
      const int u = found.taxa.in_second[at(t)];
      if (u < 0 || task.first.is_silent(t, character) || task.second.is_silent(u, other_)) continue;
      values_.push_back({t, task.first.values(t, character), task.second.values(u, other_)});
    }
  }
  scale_match match();

 private:
  bool differ(const shared_value& value, const scale_match& scale) const;
  double share_of_differences(const scale_match& scale) const;
  scale_match scale_by_extremes() const;
  void decide_entries(scale_match& scale) const;
  void add_missing_entries(scale_match& scale) const;
  void decide(const scale_match& scale, scale_match::entry& entry) const;
  std::string question(const scale_match& scale, const scale_match::entry& entry,
                       const std::string& answers) const;

  const comparison_task& task_;
  const comparison& found_;
  int character_, other_;
  std::vector<shared_value> values_;
};

// Stored values are whole thousandths of their scale, so that each may be half of that off, and
// the ends by which scales were found as well.
bool scale_comparer::differ(const shared_value& value, const scale_match& scale) const {
  const double step = std::abs(task_.first.characters[at(character_)].scale.factor) / 1000;
  const double other_step =
      std::abs(task_.second.characters[at(other_)].scale.factor * scale.factor) / 1000;
  const double rounding = 0.51 * (step + other_step) * (scale.is_changed ? 2 : 1);
  const entry_range second = on_scale(value.second, scale);
  return std::abs(value.first.low - second.low) > rounding ||
         std::abs(value.first.high - second.high) > rounding;
}

double scale_comparer::share_of_differences(const scale_match& scale) const {
  if (values_.empty()) return 0;
  const auto count = std::ranges::count_if(
      values_, [&](const shared_value& value) { return differ(value, scale); });
  return static_cast<double>(count) / static_cast<double>(values_.size());
}

// The line through the two taxa that lie farthest apart in the first set. Without a range in either
// set there is none.
scale_match scale_comparer::scale_by_extremes() const {
  scale_match scale;
  scale.character = character_;
  if (values_.empty()) return scale;
  const auto middle = [](const entry_range& range) { return (range.low + range.high) / 2; };
  const auto [least, most] = std::ranges::minmax_element(
      values_, {}, [&](const shared_value& value) { return middle(value.first); });
  const double range = middle(most->second) - middle(least->second);
  const double wanted = middle(most->first) - middle(least->first);
  if (range == 0 || wanted == 0) return scale;
  scale.factor = wanted / range;
  scale.shift = middle(least->first) - middle(least->second) * scale.factor;
  scale.is_changed = true;
  return scale;
}

std::string scale_comparer::question(const scale_match& scale, const scale_match::entry& entry,
                                     const std::string& answers) const {
  const auto line = [](const data_set& data, const entry_range& range, bool is_missing) {
    return "  " + data.file +
           (is_missing ? std::string(": ?\n") : text_of(": %g-%g\n", range.low, range.high));
  };
  const char* how = scale.is_changed ? "\nUse rescaled states of " : "\nUse states of ";
  return "\n" + task_.first.taxa[at(entry.taxon)] + ", " +
         task_.first.characters[at(character_)].name + ":\n\n" +
         line(task_.first, entry.first, entry.first_is_missing) +
         line(task_.second, entry.second, entry.second_is_missing) +
         (answers.empty()
              ? how + task_.first.file + " (y), " + task_.second.file + " (n), or both (b)?"
              : answers);
}

void scale_comparer::decide(const scale_match& scale, scale_match::entry& entry) const {
  const std::string subject = std::to_string(entry.taxon) + " " + std::to_string(character_);
  char answer = 'i';
  if (entry.first_is_missing || entry.second_is_missing) {
    answer = task_.decisions.decide(
        query::missing, subject,
        question(scale, entry,
                 "\nReplace missing entry (y), don't (n), or ignore that it is missing (i)? "));
  }
  if (answer == 'n') return;
  const bool replace = answer == 'y' && entry.first_is_missing;
  if (answer == 'i')
    answer = task_.decisions.decide(query::continuous, subject, question(scale, entry, {}));
  if (replace || answer == 'n') {
    entry.result = entry.second;
    entry.result_is_missing = entry.second_is_missing;
  }
  if (answer != 'b') return;
  entry.result = {std::min(entry.first.low, entry.second.low),
                  std::max(entry.first.high, entry.second.high)};
  entry.result_is_missing = entry.first_is_missing || entry.second_is_missing;
}

void scale_comparer::decide_entries(scale_match& scale) const {
  for (const shared_value& value : values_) {
    if (!differ(value, scale)) continue;
    scale_match::entry entry{.taxon = value.taxon,
                             .first = value.first,
                             .second = on_scale(value.second, scale),
                             .result = value.first,
                             .first_is_missing = false,
                             .second_is_missing = false,
                             .result_is_missing = false};
    if (!scale.beyond_scaling) decide(scale, entry);
    scale.differences.push_back(entry);
  }
}

// Where scales can't be brought together, the first set's missing entries stay so.
void scale_comparer::add_missing_entries(scale_match& scale) const {
  for (int t = 0; t < task_.first.ntax(); ++t) {
    const int u = found_.taxa.in_second[at(t)];
    if (u < 0) continue;
    const bool no_first = task_.first.is_silent(t, character_);
    const bool no_second = task_.second.is_silent(u, other_);
    if (no_first == no_second) continue;
    scale_match::entry entry{.taxon = t,
                             .first = {},
                             .second = {},
                             .result = {},
                             .first_is_missing = no_first,
                             .second_is_missing = no_second,
                             .result_is_missing = no_first};
    if (!no_first) entry.first = entry.result = task_.first.values(t, character_);
    if (!no_second) entry.second = on_scale(task_.second.values(u, other_), scale);
    if (!scale.beyond_scaling) decide(scale, entry);
    scale.differences.push_back(entry);
  }
}

scale_match scale_comparer::match() {
  scale_match same;
  same.character = character_;
  const double share = share_of_differences(same);
  scale_match chosen = same;
  if (share >= fixable_share) {
    const scale_match rescaled = scale_by_extremes();
    if (share_of_differences(rescaled) < share) chosen = rescaled;
  }
  chosen.beyond_scaling = share_of_differences(chosen) >= fixable_share;
  decide_entries(chosen);
  add_missing_entries(chosen);
  return chosen;
}

}  // namespace

entry_range on_scale(const entry_range& range, const scale_match& scale) {
  const entry_range result = {range.low * scale.factor + scale.shift,
                              range.high * scale.factor + scale.shift};
  return result.low <= result.high ? result : entry_range{result.high, result.low};
}

void compare_scales(const comparison_task& task, comparison& found) {
  const auto shared =
      shared_characters(task, found, [](const data_character& c) { return c.is_continuous(); });
  for (const int c : shared) {
    check_interrupt();
    scale_match scale = scale_comparer(task, found, c).match();
    if (scale.is_changed) ++found.counts.scales;
    for (const scale_match::entry& entry : scale.differences) {
      if (entry.second_is_missing) {
        ++found.counts.missing_resolved;
      } else if (entry.first_is_missing) {
        ++found.counts.missing_added;
      } else {
        ++found.counts.cells;
      }
    }
    found.scales.push_back(std::move(scale));
  }
}

}  // namespace zeb
