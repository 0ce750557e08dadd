// What a reconnection takes away from a tree, told from its path alone: the new tree isn't made.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/search_data.h"
#include "search/moves/swap_task.h"
#include "trees/tree_record.h"

namespace zeb {

/// The branches whose groups a reconnection destroys: those between the old and the new place of
/// the clip, and those between the old and the new root of the subtree.
class lost_branches {
 public:
  explicit lost_branches(const search_data& data);
  /// The nodes above these branches, in the numbering of the tree before the clip, each once. Good
  /// until the next call.
  std::span<const std::int32_t> of(const met_move& move);

 private:
  void add_main_path(const met_move& move);

  std::vector<std::int32_t> lost_;
  std::vector<std::uint8_t> is_ancestor_;  // by node: of the target, or the target itself
};

/// Groups of active taxa as sums of random numbers, one a taxon: equal sums are equal groups, as
/// good as surely. Taken is the side of a branch without the outgroup.
class group_sums {
 public:
  /// Taxa of the matrix with a 1 in `ignored` (may be empty) add nothing.
  explicit group_sums(const search_data& data, std::span<const std::uint8_t> ignored = {});
  /// By node of a tree in internal numbering; 0 for the root.
  std::vector<std::uint64_t> of_internal(std::span<const std::int32_t> anc) const;
  /// By node of a tree of the buffer.
  std::vector<std::uint64_t> of_stored(const_tree_span tree) const;

 private:
  const search_data& data_;
  std::vector<std::uint64_t> of_terminal_;
  std::uint64_t all_ = 0;
};

}  // namespace zeb
