// Clades that two trees have in common (Day 1985).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

struct shared_clade {
  std::int32_t target;  // its node in the one tree
  std::int32_t source;  // ... and in the other
  std::int32_t size;    // terminals
  std::int32_t forks;   // branches that leave its node in the strict consensus of the two
};

/// Trees of a search: binary, in internal numbering, rooted on terminal 0, `n` terminals. The
/// clades of two terminals or more but for the whole ingroup, each after those within it. Takes
/// time and memory in proportion to n.
std::vector<shared_clade> shared_clades(std::span<const std::int32_t> target,
                                        std::span<const std::int32_t> source, int n);

/// The internal nodes of the clade of `top`, each before its descendants.
std::vector<std::int32_t> nodes_of_clade(std::span<const std::int32_t> tree, int n, int top);

/// Makes the clade of `top` in `target` what the clade of `source_top`, of the same terminals, is
/// in `source`. Internal nodes of the target's clade serve for the new ones; `top` stays its node.
void copy_clade(std::span<std::int32_t> target, int top, std::span<const std::int32_t> source,
                int source_top, int n);

}  // namespace zeb
