// Groups as searches see them, for which trees have no root: divisions of the taxa that scores
// count.
#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "base/indices.h"
#include "engine/search_data.h"
#include "search/moves/lost_branches.h"
#include "supports/bremer.h"
#include "supports/bremer_trees.h"
#include "trees/tree_record.h"

namespace zeb {

/// Error where the outgroup is to be cut off: divisions are told by the side where it isn't.
void require_outgroup(const search_data& data, std::span<const std::uint8_t> excluded);
/// Taxa that no group counts, by taxon: those to be cut off, those that the tree lacks, and those
/// that aren't active.
std::vector<std::uint8_t> taxa_without_part(const search_data& data,
                                            std::span<const std::uint8_t> excluded,
                                            const_tree_span tree);
/// The groups that have a value, as divisions. Takes their values from groups of all taxa but one,
/// which are in every tree.
class divisions {
 public:
  /// `tree` is that of the groups.
  divisions(reference_groups& groups, const group_sums& sums, const_tree_span tree);
  /// Records of the groups with these sums; -1 none. The two clades at a root are one division: the
  /// record of one of them stands for it.
  std::vector<int> records_in(std::span<const std::uint64_t> sums) const;
  /// Gives all groups the measure of their division.
  void share(std::vector<group_measure>& measures) const;
  /// Does this record stand for its division?
  bool is_first(int record) const { return first_of_[at(record)] == record; }

 private:
  std::unordered_map<std::uint64_t, int> record_of_sum_;
  std::vector<int> first_of_;  // by record; -1 without a value
};

/// A tree in which these groups are, and no others, takes part.
void take_tree(std::vector<group_measure>& measures, std::span<const int> records,
               const bremer_settings& wanted, const tree_comparer::difference& difference);

}  // namespace zeb
