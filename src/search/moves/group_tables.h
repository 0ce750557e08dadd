// Which branches of a tree lie among the members of a constraint group, or among the other taxa:
// that tells where taxa and clips may go. All groups are dealt with at once, as bits of words.
//
// In a tree that has a group, the branches that join its members don't touch those that join the
// others; between them lies a path of branches, each of which parts the ones from the others. What
// brings members only may go to the members' branches and the path, but not among the branches of
// the others; and the other way round. A branch that leads to nothing but floating taxa is among
// what it hangs on.
#pragma once

#include <cstddef>
#include <vector>

#include "engine/search_data.h"
#include "trees/constraints/constraints.h"

namespace zeb {

/// Tables of one binary tree of the engine, whole or growing, or of a part of one. `rows` must
/// outlive them. A branch is named by the node above it.
class group_tables {
 public:
  using words = std::vector<set_word>;

  group_tables(const constraint_rows& rows, int nodes);

  /// Reads a tree rooted on terminal 0.
  void read_tree(const tree_arrays& tree) { read(tree, tree.sister[0], true); }
  /// The same for a tree that lacks some terminals yet: needed before `allows`.
  void read_growing_tree(const tree_arrays& tree);
  /// Reads the clade of `top`; `rooted`: terminal 0 hangs on its branch, so that it is a tree.
  void read(const tree_arrays& tree, int top, bool rooted);

  /// How many groups are broken: positive ones that the tree lacks, negative ones that it has.
  int broken() const;
  /// May a terminal that the tree lacks come on this branch? Positive groups must be there as far
  /// as they go. Negative ones are tested with the last of all their members and others: before
  /// that the rest may tear them, and floating taxa never do. A tree that was made in this way of
  /// all terminals breaks nothing. Takes a few operations on words.
  bool allows(int terminal, int branch) const;

  /// What was read, each node after its ancestor.
  const std::vector<int>& nodes_read() const { return order_; }
  /// Groups with members, with others among the terminals read.
  const words& all_members() const { return all_members_; }
  const words& all_others() const { return all_others_; }
  /// Groups, by bit, that no branch of what was read parts.
  const words& torn() const { return torn_; }
  /// Groups that are torn, but that one move could bring together.
  const words& fragile() const { return fragile_; }
  /// Words by node: groups with members (others) among the terminals of the clade of `v`, and
  /// beyond it.
  const set_word* members_below(int v) const { return row(members_below_, v); }
  const set_word* others_below(int v) const { return row(others_below_, v); }
  const set_word* members_beyond(int v) const { return row(members_beyond_, v); }
  const set_word* others_beyond(int v) const { return row(others_beyond_, v); }
  /// Groups among whose members, or others, the branch lies; good where they aren't torn.
  const set_word* among_members(int v) const { return row(among_members_, v); }
  const set_word* among_others(int v) const { return row(among_others_, v); }
  /// Groups among whose members' branches the node lies.
  const set_word* node_among_members(int v) const { return row(node_members_, v); }

 private:
  const set_word* row(const words& table, int v) const { return table.data() + at(v) * words_; }
  set_word* row(words& table, int v) { return table.data() + at(v) * words_; }
  void list_nodes(const tree_arrays& tree, int top);
  void count_below(const tree_arrays& tree);
  void count_beyond(const tree_arrays& tree, int top, bool rooted);
  void find_joints(const tree_arrays& tree);
  void place_branches(const tree_arrays& tree, int top);
  void note_waiting();

  const constraint_rows& rows_;
  std::size_t words_;
  int terminals_;
  bool any_negative_;
  std::vector<int> order_;  // nodes read, each after its ancestor
  words members_below_, others_below_, members_beyond_, others_beyond_;
  words among_members_, among_others_;
  words node_members_,
      node_others_;                 // by node: groups whose members' or others' branches meet here
  words all_members_, all_others_;  // groups with members, with others in what was read
  words torn_, fragile_;
  words waiting_more_;  // groups of which two members or others at least aren't in the tree
};

}  // namespace zeb
