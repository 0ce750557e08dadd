// The constraints that a search obeys.
//
// A clip, its subtree on the one side and the rest of the tree on the other, breaks a group of the
// tree only where it joins the one side's part of the group to the wrong branch of the other side.
// Of the two sides at most one holds members and others both: only there a branch must be chosen
// with care, and which ones are wrong, the tables of the whole tree say before the clip is made. So
// a group closes branches of the main tree or of the subtree, but never pairs of them. What is open
// is connected, with the old place in it: where little is, its branches are listed from there, and
// nothing else is costed. Groups that must not be there, and trees that break constraints from the
// start, need tables of both halves; they are made only if a move within the bound might matter to
// them.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "engine/packing/reduced_data.h"
#include "engine/search_data.h"
#include "search/moves/group_tables.h"

namespace zeb {

class search_constraints {
 public:
  /// Null while constraints are off. Errors: groups that contradict each other.
  static std::unique_ptr<search_constraints> in_force(const search_data& data);
  /// Others than the user's.
  static std::unique_ptr<search_constraints> of_rows(const search_data& data, constraint_rows rows);

  /// The same for reduced data: what is left of the groups in a sector of the tree in work of
  /// `outer`, whose constraints these are.
  std::unique_ptr<search_constraints> of_sector(const search_data& outer,
                                                const tree_sector& sector);

  /// By terminal of the engine.
  const constraint_rows& rows() const { return rows_; }
  /// Does the tree in work, with all terminals, break none?
  bool obeyed(const search_data& data);
  /// Marks branches of the tree in work that stay: where all branches that part a positive group
  /// are marked 0, the one next to its members becomes 1.
  void protect(const search_data& data, std::span<std::uint8_t> marks);

  // -- a swap --
  /// The tree in work, unclipped, is another one.
  void begin_swap(const search_data& data);
  /// It has been changed by a move.
  void tree_changed();
  /// May any other place be open to this clip? To be asked before it is made, and then about moves.
  bool begin_clip(const search_data& data, int clip);
  /// Is any branch known to be closed to it?
  bool closes_any() const { return closes_any_; }
  /// Is the branch, of the main tree or the subtree, closed to the clip?
  bool closes(int branch) const;
  /// Lists the open branches of the main tree, the clip detached, from its old place `sister`
  /// on. Returns their number, or one more than `most` where there are more.
  int list_open_main(const search_data& data, int sister, std::span<std::int32_t> list,
                     int most) const;
  /// The same for the subtree; its two branches at the root are one, named by the second.
  int list_open_subtree(const search_data& data, std::span<std::int32_t> list, int most) const;
  /// Would the tree break constraints if the clip was joined by its branch `root` to `target`? The
  /// tree in work is clipped.
  bool forbids(const search_data& data, int root, int target);

 private:
  search_constraints(constraint_rows rows, int nodes);
  void find_faults();
  bool is_open_nearby(const search_data& data) const;
  void read_halves(const search_data& data);
  bool breaks_by_halves(int root, int target) const;

  constraint_rows rows_;
  bool any_negative_ = false;
  group_tables whole_;        // of the tree in work, unclipped
  group_tables other_;        // of another tree
  bool astray_ = false;       // the tree breaks constraints
  bool may_come_up_ = false;  // a move may bring together a negative group

  int clip_ = -1;
  bool closes_any_ = false;
  std::vector<set_word> wrong_among_members_;  // groups whose members' branches are closed
  std::vector<set_word> wrong_among_others_;
  group_tables clip_half_;
  group_tables main_half_;
  bool halves_known_ = false;
};

}  // namespace zeb
