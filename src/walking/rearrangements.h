// The trees one move away from a tree: SPR takes a clade off and joins it to another branch; TBR
// may turn it as well.
#pragma once

#include <cstdint>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

enum class move_kind { spr, tbr };

/// Steps through the trees one move away, each of them once, and never the tree itself. Clades are
/// taken in the order of their nodes, branches from the next node on. The root stays where it is:
/// its own descendants aren't moved, nor is anything joined to the outgroup, unless
/// `moves_outgroup`.
class rearrangements {
 public:
  rearrangements(const_tree_span tree, int ntax, int outgroup, move_kind kind, bool moves_outgroup);

  /// Writes the next tree; false where there are no more.
  bool next(tree_span tree);
  /// The move that led to it: the clade of `clip` was joined to the branch below `target`, turned
  /// so that its root lies on the branch below `rooting`; -1 as it was.
  int clip() const { return clip_; }
  int target() const { return targets_[target_]; }
  int rooting() const { return rootings_[rooting_]; }
  /// How much has been gone through.
  double percent() const;

 private:
  bool advance();
  bool begin_clip();
  bool can_be_clipped(int node) const;
  void list_targets(const std::vector<std::uint8_t>& in_clade);
  void list_rootings(const std::vector<std::uint8_t>& in_clade);
  void write_current(tree_span tree);
  bool note(const_tree_span tree);

  int ntax_;
  int outgroup_;
  move_kind kind_;
  bool moves_outgroup_;
  int limit_;                // node numbers are below it
  std::vector<int> up_;      // ancestors; -1 for the root and for nodes that aren't there
  std::vector<int> degree_;  // descendants
  int clip_ = -1;
  std::vector<int> targets_;
  std::vector<int> rootings_;
  std::size_t target_ = 0;
  std::size_t rooting_ = 0;
  std::vector<int> ancestors_;          // scratch
  std::vector<std::uint64_t> visited_;  // hashes of trees: open addressing, 0 free
  std::size_t visited_count_ = 0;
};

}  // namespace zeb
