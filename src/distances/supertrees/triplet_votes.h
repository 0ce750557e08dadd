// What trees say of each three taxa: which two are closer to each other than to the third.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// Trees by how they resolve three taxa a < b < c.
struct triplet_vote {
  std::array<std::uint16_t, 3> apart{};  // trees in which a, b, c is outside of the other two
  std::uint16_t unresolved = 0;
  int trees() const { return apart[0] + apart[1] + apart[2] + unresolved; }
};

/// Of taxa numbered from 0. Memory: 8 bytes for each three of them.
class triplet_votes {
 public:
  static constexpr int most_taxa = 500;
  explicit triplet_votes(int taxa);
  /// Counts a tree: terminal i of the cut tree is taxon `taxa[i]`, increasing.
  void count(const_tree_span cut, const std::vector<int>& taxa);
  int taxa() const { return taxa_; }
  /// a < b < c.
  const triplet_vote& of(int a, int b, int c) const { return votes_[place(a, b, c)]; }

 private:
  static std::size_t place(int a, int b, int c) {
    const auto x = static_cast<std::size_t>(a);
    const auto y = static_cast<std::size_t>(b);
    const auto z = static_cast<std::size_t>(c);
    return z * (z - 1) * (z - 2) / 6 + y * (y - 1) / 2 + x;
  }
  int taxa_;
  std::vector<triplet_vote> votes_;
};

}  // namespace zeb
