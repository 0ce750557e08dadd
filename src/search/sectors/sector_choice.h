// Which sectors of a tree are searched.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/random.h"
#include "engine/packing/reduced_data.h"

namespace zeb {

/// A sector of about `size` terminals (at least 80 % of it) below a node drawn at random; clades
/// within it are made terminals where it would have more. `taken` (by node) are tops of sectors
/// drawn before at this size: another node is looked for, and where one is found it is marked. The
/// top is -1 where there is none.
tree_sector random_sector(std::span<const std::int32_t> tree, int n, int size,
                          random_generator& random, std::span<std::uint8_t> taken);

/// Cuts a tree into about `count` sectors that have no branch in common; of sizes as even as
/// possible, or drawn at random. The last one has the base of the tree.
std::vector<tree_sector> exclusive_sectors(std::span<const std::int32_t> tree, int n, int count,
                                           bool even, random_generator& random);

/// The forks of a tree with these groups only (`is_group`, a byte for each branch), from the base
/// outward: all that branches off a group's node there is a terminal. Those of `least` to `most`
/// branches.
std::vector<tree_sector> sectors_of_groups(std::span<const std::int32_t> tree, int n,
                                           std::span<const std::uint8_t> is_group, int least,
                                           int most);

/// The part of a tree within `distance` branches of a node.
tree_sector sector_around(std::span<const std::int32_t> tree, int n, int node, int distance);

/// An internal node with its descendants, and with those of descendants that have more than
/// `above` and fewer than `below` branches themselves. The tree may have polytomies.
tree_sector sector_of_polytomies(std::span<const std::int32_t> tree, int n, int node, int above,
                                 int below);

}  // namespace zeb
