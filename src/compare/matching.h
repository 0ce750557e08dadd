// Which elements of two data sets are the same, by their names.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// Which element of the other set is the same one; -1: none.
struct correspondence {
  std::vector<int> in_second;  // by number in the first set
  std::vector<int> in_first;   // by number in the second set
  struct approximate_match {
    int first, second;
    double similarity;
  };
  std::vector<approximate_match> approximate;  // those found by similarity, best first

  int shared() const;
  /// Elements of the first set that the second lacks, and the other way round.
  std::vector<int> only_in_first() const;
  std::vector<int> only_in_second() const;
};

/// Pairs whose identity the user has settled.
struct forced_pair {
  int first, second;
  bool same;
};

struct matching_rules {
  bool by_similarity = true;       // else names must be the same
  std::string_view progress = {};  // what this stage is called
  /// Can they be compatible? Asked before names are aligned, so it must be quick. Null: yes.
  std::function<bool(int first, int second)> plausible = {};
  /// May the two be the same, as far as anything but their names tells? Null: yes.
  std::function<bool(int first, int second)> compatible = {};
  /// Are the two, whose names are alike, the same? Null: yes.
  std::function<bool(int first, int second)> confirm = {};
};

/// Forced pairs first, then elements of the same name, in order; then the most similar ones, best
/// pair first, from the threshold of `help !` on.
correspondence match_names(std::span<const std::string> first, std::span<const std::string> second,
                           std::span<const forced_pair> forced, const matching_rules& rules);
/// By number in the first set: the element of the second set whose name is most like that of an
/// unmatched one, -1 where nothing is alike and for those that are matched.
std::vector<int> closest_names(std::span<const std::string> first,
                               std::span<const std::string> second, const correspondence& found);

}  // namespace zeb
