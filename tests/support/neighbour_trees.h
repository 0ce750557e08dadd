// Every tree one move away, by plain edits of neighbour lists.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "support/naive_parsimony.h"

namespace naive {

/// Calls `visit` with each tree that comes of clipping one clade of a binary tree (rooted at node
/// `terminals`, beside terminal 0) and joining it elsewhere: SPR; with `tbr` it may be turned, too.
/// Clades of terminals that are all flagged in `left_alone` (by terminal, may be empty) aren't
/// clipped.
void for_each_neighbour(const rooted_tree& tree, bool tbr, std::span<const std::uint8_t> left_alone,
                        const std::function<void(const rooted_tree&)>& visit);

}  // namespace naive
