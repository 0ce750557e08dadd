#include "compare/matching.h"

#include <algorithm>
#include <cstdlib>
#include <unordered_map>

#include "base/indices.h"
#include "base/interrupts.h"
#include "compare/name_sketch.h"
#include "console/progress.h"
#include "language/name_matching.h"

namespace zeb {
namespace {

std::vector<int> without_match(const std::vector<int>& matches) {
  std::vector<int> found;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    if (matches[i] < 0) found.push_back(static_cast<int>(i));
  }
  return found;
}

class name_matcher {
 public:
  name_matcher(std::span<const std::string> first, std::span<const std::string> second,
               std::span<const forced_pair> forced, const matching_rules& rules)
      : first_(first), second_(second), forced_(forced), rules_(rules) {
    found_.in_second.assign(first.size(), -1);
    found_.in_first.assign(second.size(), -1);
  }

  correspondence match() {
    for (const forced_pair& pair : forced_) {
      if (pair.same) join(pair.first, pair.second);
    }
    match_equal();
    if (rules_.by_similarity) match_similar();
    return std::move(found_);
  }

 private:
  void join(int first, int second) {
    found_.in_second[at(first)] = second;
    found_.in_first[at(second)] = first;
  }
  bool may_be_same(int first, int second) const {
    const auto kept_apart = [first, second](const forced_pair& pair) {
      return !pair.same && pair.first == first && pair.second == second;
    };
    return std::ranges::none_of(forced_, kept_apart) &&
           (!rules_.compatible || rules_.compatible(first, second));
  }
  void match_equal();
  void match_similar();
  std::vector<correspondence::approximate_match> similar_pairs() const;

  std::span<const std::string> first_, second_;
  std::span<const forced_pair> forced_;
  const matching_rules& rules_;
  correspondence found_;
};

void name_matcher::match_equal() {
  std::unordered_multimap<std::string_view, int> by_name;
  for (std::size_t j = second_.size(); j-- > 0;) by_name.emplace(second_[j], static_cast<int>(j));
  for (std::size_t i = 0; i < first_.size(); ++i) {
    if (found_.in_second[i] >= 0) continue;
    std::vector<int> candidates;
    const auto [begin, end] = by_name.equal_range(first_[i]);
    for (auto it = begin; it != end; ++it) candidates.push_back(it->second);
    std::ranges::sort(candidates);
    for (const int j : candidates) {
      if (found_.in_first[at(j)] >= 0 || !may_be_same(static_cast<int>(i), j)) continue;
      join(static_cast<int>(i), j);
      break;
    }
  }
}

std::vector<correspondence::approximate_match> name_matcher::similar_pairs() const {
  const double threshold = matching.match_threshold;
  const std::vector<int> rows = without_match(found_.in_second);
  const std::vector<int> columns = without_match(found_.in_first);
  const std::vector<name_sketch> sketches = sketches_of(first_);
  const std::vector<name_sketch> others = sketches_of(second_);
  std::vector<correspondence::approximate_match> pairs;
  for (std::size_t r = 0; r < rows.size(); ++r) {
    check_interrupt();
    show_progress(rules_.progress, static_cast<double>(r), static_cast<double>(rows.size()));
    const int i = rows[r];
    for (const int j : columns) {
      if (!sketches[at(i)].can_reach(threshold, others[at(j)])) continue;
      if (rules_.plausible && !rules_.plausible(i, j)) continue;
      const double likeness = similarity(first_[at(i)], second_[at(j)], threshold);
      if (likeness >= threshold && likeness > 0) pairs.push_back({i, j, likeness});
    }
  }
  std::ranges::stable_sort(pairs, [](const auto& a, const auto& b) {
    // Of pairs that are equally alike, those at like places come first.
    return a.similarity != b.similarity
               ? a.similarity > b.similarity
               : std::abs(a.first - a.second) < std::abs(b.first - b.second);
  });
  return pairs;
}

void name_matcher::match_similar() {
  for (const auto& pair : similar_pairs()) {
    if (found_.in_second[at(pair.first)] >= 0 || found_.in_first[at(pair.second)] >= 0) continue;
    if (!may_be_same(pair.first, pair.second)) continue;
    if (rules_.confirm && !rules_.confirm(pair.first, pair.second)) continue;
    join(pair.first, pair.second);
    found_.approximate.push_back(pair);
  }
}

}  // namespace

int correspondence::shared() const {
  return static_cast<int>(in_second.size() - only_in_first().size());
}

std::vector<int> correspondence::only_in_first() const { return without_match(in_second); }
std::vector<int> correspondence::only_in_second() const { return without_match(in_first); }

correspondence match_names(std::span<const std::string> first, std::span<const std::string> second,
                           std::span<const forced_pair> forced, const matching_rules& rules) {
  return name_matcher(first, second, forced, rules).match();
}

std::vector<int> closest_names(std::span<const std::string> first,
                               std::span<const std::string> second, const correspondence& found) {
  std::vector<int> closest(first.size(), -1);
  for (const int i : found.only_in_first()) {
    check_interrupt();
    double best = 0;
    for (std::size_t j = 0; j < second.size(); ++j) {
      const double likeness = similarity(first[at(i)], second[j]);
      if (likeness <= best) continue;
      best = likeness;
      closest[at(i)] = static_cast<int>(j);
    }
  }
  return closest;
}

}  // namespace zeb
