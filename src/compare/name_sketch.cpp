#include "compare/name_sketch.h"

#include <algorithm>
#include <cctype>

#include "base/indices.h"

namespace zeb {

name_sketch::name_sketch(std::string_view name) : length_(static_cast<int>(name.size())) {
  for (const char c : name) {
    std::uint8_t& count = counts_[at(std::tolower(static_cast<unsigned char>(c)) % classes)];
    if (count < 255) ++count;
  }
}

bool name_sketch::can_reach(double threshold, const name_sketch& other) const {
  int more = 0;
  int less = 0;
  for (std::size_t i = 0; i < classes; ++i) {
    const int difference = counts_[i] - other.counts_[i];
    more += difference > 0 ? difference : 0;
    less += difference < 0 ? -difference : 0;
  }
  const int shorter = std::min(length_, other.length_);
  return shorter > 0 && std::max(more, less) <= (1 - threshold) * shorter;
}

std::vector<name_sketch> sketches_of(std::span<const std::string> names) {
  return {names.begin(), names.end()};
}

}  // namespace zeb
