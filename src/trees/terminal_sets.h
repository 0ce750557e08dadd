// Sets of terminals as keys: nodes of different trees with the same terminals, or branches that
// part the same terminals.
#pragma once

#include <compare>
#include <cstdint>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// Two sums of pseudo-random words, one for each terminal: equal for equal sets of terminals, and
/// in practice for those only.
struct terminal_set_key {
  std::uint64_t first = 0;
  std::uint64_t second = 0;
  auto operator<=>(const terminal_set_key&) const = default;
};

/// The key of each node's terminals, up to the last node in use.
std::vector<terminal_set_key> terminal_set_keys(const_tree_span tree, int ntax);
/// The same key for a set and for what `all` has beyond it.
terminal_set_key key_of_branch(const terminal_set_key& set, const terminal_set_key& all);

}  // namespace zeb
