// Where taxa and clips may go in a tree without breaking a group of the constraints. All groups are
// dealt with at once, as bits of words.
//
// In a tree that has a group, the branches that join its members don't touch those that join the
// others; between them lies a path of branches, each of which parts the ones from the others. What
// brings members only may go to the members' branches and the path, but not among the branches of
// the others; and the other way round. A branch that leads to nothing but floating taxa is among
// what it hangs on. All that is told by what lies on the two sides of each branch, which is all
// that is kept: a change of the tree changes it on the way to the root only, but for a taxon that
// is added.
#pragma once

#include <cstddef>
#include <vector>

#include "engine/search_data.h"
#include "trees/constraints/constraints.h"

namespace zeb {

/// Tables of one binary tree of the engine, whole or growing, or of a part of one. `rows` and the
/// tree that is read must outlive them. A branch is named by the node above it.
class group_tables {
 public:
  using words = std::vector<set_word>;

  group_tables(const constraint_rows& rows, int nodes);

  /// Reads a tree rooted on terminal 0.
  void read_tree(const tree_arrays& tree) { read(tree, tree.sister[0], true); }
  /// Reads the clade of `top`; `rooted`: terminal 0 hangs on its branch, so that it is a tree.
  void read(const tree_arrays& tree, int top, bool rooted);
  /// The tree that was read has been changed; all terminals are still there.
  void update();
  /// Finds out which groups are torn; asked for after reading, by whoever wants to know.
  void find_torn();

  /// What a growing tree is read for: afterwards `allows` may be asked. It has terminal 0 and
  /// another one at least.
  void read_growing_tree(const tree_arrays& tree);
  /// The same after one terminal more came to the tree that was read.
  void note_added(int terminal);
  /// When are negative groups tested? Surely: with the last of all their members and others, since
  /// any of them may tear a group, while floating taxa never do; no tree that breaks none is
  /// missed. Early: as soon as all members, or all others, are there; a builder then isn't left
  /// with groups of which the last taxon can tear but one.
  enum class closing { surely, early };
  /// May a terminal that the tree lacks come on this branch? Positive groups must be there as far
  /// as they go. A tree that was made in this way of all terminals breaks nothing. Takes a few
  /// operations on words.
  bool allows(int terminal, int branch, closing when = closing::surely) const;

  /// How many groups are broken, by what is known to be torn: positive ones that the tree lacks,
  /// negative ones that it has.
  int broken() const;
  /// Groups, by bit, that no branch of what was read parts.
  const words& torn() const { return torn_; }
  /// Groups that are torn, but that one move could bring together.
  const words& fragile() const { return fragile_; }

  /// What was read, each node after its ancestor.
  const std::vector<int>& nodes_read() const { return order_; }
  /// Groups with members, with others among the terminals read.
  const words& all_members() const { return all_members_; }
  const words& all_others() const { return all_others_; }
  /// Words by node: groups with members (others) among the terminals of the clade of `v`, and
  /// beyond it.
  const set_word* members_below(int v) const { return row(members_below_, v); }
  const set_word* others_below(int v) const { return row(others_below_, v); }
  const set_word* members_beyond(int v) const { return row(members_beyond_, v); }
  const set_word* others_beyond(int v) const { return row(others_beyond_, v); }
  /// Of the groups that aren't torn: those of `m` among whose members the branch lies, and those of
  /// `o` among whose others it does. The tree is as it was read, or less a clip, with some of each
  /// of these groups on either side.
  set_word among(int branch, std::size_t w, set_word m, set_word o) const;
  /// Groups whose members are in two directions, at least, from an internal node.
  set_word members_meet(int node, std::size_t w) const;

 private:
  struct wanted {
    std::size_t word;
    set_word members;
    set_word others;
  };
  const set_word* row(const words& table, int v) const { return table.data() + at(v) * words_; }
  set_word* row(words& table, int v) { return table.data() + at(v) * words_; }
  set_word fixed_below(int v, std::size_t w) const {
    return members_below(v)[w] | others_below(v)[w];
  }
  set_word fixed_beyond(int v, std::size_t w) const {
    return members_beyond(v)[w] | others_beyond(v)[w];
  }
  set_word at_meeting(int a, const set_word* members, const set_word* others, set_word groups,
                      const wanted& what) const;
  set_word of_stem(int v, set_word groups, const wanted& what) const;
  set_word of_clade(int v, set_word groups, const wanted& what) const;
  void unite_below(int v);
  void take_beyond(int v);
  bool list_changed();
  void count_placed(int terminal);

  const constraint_rows& rows_;
  const tree_arrays* tree_ = nullptr;
  std::size_t words_;
  int terminals_;
  bool any_negative_;
  std::vector<int> order_;  // nodes read, each after its ancestor
  int top_ = -1;
  std::vector<std::int32_t> anc_;     // of the tree read, for `update`
  std::vector<std::uint8_t> listed_;  // by node, within `update`
  std::vector<int> changed_;          // nodes with other terminals above them, the highest first
  words members_below_, others_below_, members_beyond_, others_beyond_;
  words all_members_, all_others_;  // groups with members, with others in what was read
  words torn_, fragile_;
  // What a growing tree lacks of the negative groups, by group and as bits.
  std::vector<int> members_to_come_, others_to_come_;
  words lacks_members_, lacks_others_;  // some are still to come
  words lacks_member_, lacks_other_;    // just one is
  words two_members_, two_others_;      // two at least are there
};

}  // namespace zeb
