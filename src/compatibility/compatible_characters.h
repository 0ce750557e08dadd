// Which characters are compatible in pairs: without homoplasy on one tree.
//
// A character is one or several partitions of the taxa into classes: its states, or, of an additive
// one, what is on either side of each threshold. Two partitions are compatible if the graph of
// their classes, with an edge where some taxon is in both, has no circle. For partitions into two
// classes of all taxa, compatibility in pairs is compatibility of all of them; with more classes,
// or missing entries, it is only necessary.
#pragma once

#include <cstdint>
#include <vector>

#include "base/taxon_set.h"

namespace zeb {

/// Classes by taxon; -1 where the cell is missing or has several states.
struct taxon_partition {
  std::vector<int> class_of;
  int classes = 0;
  bool operator==(const taxon_partition&) const = default;

  bool is_split() const;  // two classes, of all taxa that there are
};
bool are_compatible(const taxon_partition& a, const taxon_partition& b);

/// Characters with the same partitions, which are in the same sets.
struct character_pattern {
  std::vector<int> characters;
  std::vector<taxon_partition> partitions;
  std::int64_t weight = 0;  // of all of them

  bool is_exact() const;  // splits only
};
struct compatibility_graph {
  std::vector<character_pattern> patterns;
  std::vector<taxon_set> compatible;  // by pattern: with which others
};

/// Can the character be compared: discrete, without costs, informative for the active taxa?
bool can_be_compared(int character);
/// Of the characters listed, over the active taxa (others are missing). `weighted`: characters
/// count by their weights, else as one.
compatibility_graph compare_characters(const std::vector<int>& characters, bool weighted);

}  // namespace zeb
