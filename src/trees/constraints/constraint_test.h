// Trees of the buffer against the constraints, whether these are switched on or not.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "trees/constraints/constraints.h"

namespace zeb {

/// The definitions and the active taxa must not change while it lives. Trees may have polytomies
/// and lack taxa.
class constraint_test {
 public:
  struct verdict {
    int fulfilled = 0;
    int violated = 0;
  };
  /// The constraint tree is one constraint. Negative groups that every tree has don't count.
  verdict judge(const_tree_span tree);
  /// Marks branches, by internal node, that stay: where all branches that part a positive group are
  /// marked 0, the one next to its members becomes 1.
  void protect(const_tree_span tree, std::span<std::uint8_t> marks);

 private:
  void read(const_tree_span tree);
  const set_word* row(const std::vector<set_word>& table, int v) const {
    return table.data() + at(v) * rows_.words;
  }

  constraint_rows rows_;                                  // of the taxa below
  std::vector<std::int32_t> taxa_;                        // active ones that the tree has
  std::vector<set_word> members_, others_;                // by node: among its terminals
  std::vector<set_word> members_beyond_, others_beyond_;  // among the rest
  std::vector<set_word> members_meet_;  // by node: with members in two directions at least
  std::vector<set_word> torn_;          // groups that no branch parts
};

/// Of the flagged trees in memory, leaves those that fulfil the constraints; all of them where none
/// does. Returns what to say of it.
const char* keep_fulfilling(std::vector<std::uint8_t>& keep);

}  // namespace zeb
