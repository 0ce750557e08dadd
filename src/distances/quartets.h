// Triplets and quartets that two trees resolve alike.
//
// Both are counted exactly, from the numbers of terminals that a descendant (or any of the parts
// around a node) of one tree shares with one of the other. For each pair of nodes these are a
// small matrix, from whose sums of rows and columns follow how many triplets or quartets hang
// together in the same way there. All matrices together have as many entries as there are pairs of
// branches, so time grows with the square of the terminals for dichotomous trees; quartets that
// both leave unresolved need products of rows where both nodes are polytomies, at worst the power
// 2.5 in all.
#pragma once

#include <cstdint>

#include "distances/cut_trees.h"

namespace zeb {

/// All sets of three (or four) terminals, by what the trees make of them.
struct resolution_counts {
  std::int64_t all = 0;
  std::int64_t alike = 0;      // both resolve them, in the same way
  std::int64_t different = 0;  // both resolve them, in different ways
  std::int64_t first = 0;      // only the first tree resolves them
  std::int64_t second = 0;
  std::int64_t neither = 0;

  std::int64_t distance() const { return different + first + second; }
};

/// Trees of the same terminals.
resolution_counts compare_triplets(const cut_tree& a, const cut_tree& b);
/// The same without the roots.
resolution_counts compare_quartets(const cut_tree& a, const cut_tree& b);
/// The most terminals that quartets can be counted for in 64 bits.
constexpr int most_terminals_of_quartets = 30000;

}  // namespace zeb
