// The narrow form of the cluster test: costs of all pairs of branches of two clusters over the
// words that can tell them apart, the rest being a sum known beforehand.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/search_data.h"

namespace zeb {

/// Two clusters, one of the clipped subtree and one of the main tree, ready to be compared pair by
/// pair. Only for uniform weights. The vectors keep their room from pair to pair.
class narrow_pair {
 public:
  /// Looks at the branch sets of the listed nodes, a field at a time: a field whose unions don't
  /// meet costs a step in every pair, one whose intersections meet costs none in any. What is left
  /// goes into compact copies. `sorted`: word by word, else in whole blocks. Returns false where
  /// the fixed cost alone exceeds `bound`.
  bool prepare(const search_data& data, std::span<const std::int32_t> subtree_nodes,
               std::span<const std::int32_t> main_nodes, bool sorted, std::int32_t bound);
  /// First main node from `from` on whose cost against subtree node `i` (by place in its list) is
  /// within the bound; its place, with the cost. The count of main nodes where there is none.
  int scan(const search_data& data, int i, int from, std::int32_t bound, std::int32_t* cost) const;

 private:
  struct word_choice {
    std::int32_t place;  // in the full layout
    word settled;        // fields that count in `fixed_` already: all ones in both operands
  };
  void choose_words(const search_data& data, std::span<const std::int32_t> subtree_nodes,
                    std::span<const std::int32_t> main_nodes, bool sorted);
  void copy_sets(const search_data& data, std::span<const std::int32_t> nodes,
                 std::size_t first_row);

  std::vector<word_choice> chosen_;  // padded to blocks with places of -1
  kernel_layout layout_;             // of the chosen words
  std::int32_t fixed_ = 0;
  std::vector<word> memory_;  // rows of chosen words; subtree nodes, then main nodes
  word* rows_ = nullptr;      // aligned to 64 bytes
  std::size_t stride_ = 0;
  std::vector<std::int32_t> row_numbers_;  // of the main nodes
};

}  // namespace zeb
