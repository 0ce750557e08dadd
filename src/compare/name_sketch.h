// A quick look at two names, which tells that most aren't alike.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// How often each letter occurs in a name, folded into a few counters. Two names differ by at least
/// as many edits as the counters say, which is far cheaper to see than their alignment.
class name_sketch {
 public:
  explicit name_sketch(std::string_view name);
  /// False: the similarity of the two is below the threshold.
  bool can_reach(double threshold, const name_sketch& other) const;

 private:
  static constexpr int classes = 32;
  std::array<std::uint8_t, classes> counts_{};
  int length_;
};
std::vector<name_sketch> sketches_of(std::span<const std::string> names);

}  // namespace zeb
