// Which states of a character tell trees apart.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

struct informative_states {
  std::uint32_t kept = 0;    // states that get bits
  std::uint32_t unique = 0;  // states of a single taxon, whose steps no tree can save
  std::uint32_t full = 0;    // a cell with all of these says nothing
  bool additive = false;
  std::vector<std::uint32_t>
      edges;  // a tree of states: the far side of each edge that gets a field
};

/// States of a character that are worth bits, over the given taxa (matrix rows).
informative_states trim_states(int character, std::span<const std::int32_t> taxa);

}  // namespace zeb
