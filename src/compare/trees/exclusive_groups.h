// Groups that the trees of one file have and those of the other don't, and what supports them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "mapping/apomorphies.h"
#include "mapping/common_groups.h"
#include "trees/tree_record.h"

namespace zeb {

/// The trees of one file, cut to the taxa that are compared, and their strict consensus.
struct compared_tree_set {
  /// `trees`: numbers in the buffer; `cut_off`: by taxon.
  compared_tree_set(std::span<const int> trees, std::span<const std::uint8_t> cut_off);
  compared_tree_set(const compared_tree_set&) = delete;
  compared_tree_set& operator=(const compared_tree_set&) = delete;

  std::vector<std::vector<tree_node>> records;
  std::vector<tree_shape> shapes;  // of the records
  common_groups common;
};

/// The taxa that some of the trees lack, and those that are left out anyway: by taxon.
std::vector<std::uint8_t> taxa_not_compared(std::span<const int> trees,
                                            std::span<const std::uint8_t> left_out);

struct exclusive_groups {
  std::vector<int> nodes;  // of the consensus of the set, ascending
  int contradicted = 0;    // how many of them the consensus of the other set excludes
  int shared = 0;          // other groups of the set, but for that of all taxa but the outgroup
};
exclusive_groups groups_only_in(const compared_tree_set& set, const compared_tree_set& other);

/// The changes of these characters on the branches of these nodes that all trees of the set have.
std::vector<apomorphy> synapomorphies_of(const compared_tree_set& set, std::span<const int> nodes,
                                         const std::vector<int>& characters);

}  // namespace zeb
