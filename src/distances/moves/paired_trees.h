// Two rooted trees on the way to an agreement forest: one is cut to pieces until all that is left
// of the other is in the pieces.
//
// A pair of terminals that are sisters in the first tree becomes one terminal where the second has
// them as sisters too; else something has to be cut off in the second (compare Bordewich and
// Semple 2005). What may be cut is one of the two, or what hangs on the path between them.
#pragma once

#include <vector>

#include "base/indices.h"

namespace zeb {

/// A binary tree of `terminals` leaves: nodes from there on are internal, two of them for each but
/// the root.
struct binary_tree {
  std::vector<int> ancestor;       // -1: the root
  std::vector<int> first, second;  // by node; -1 for terminals
  int terminals = 0;
};

class paired_trees {
 public:
  paired_trees(const binary_tree& a, const binary_tree& b);

  /// What stands against the next pair of sisters of the first tree.
  struct conflict {
    int first = -1, second = -1;  // the sisters; -1: none are left, the forest is complete
    bool apart = false;           // they are in different pieces
    std::vector<int> between;     // nodes hanging on the path between them
  };
  /// Joins sisters as long as the second tree has them too, then tells the conflict.
  conflict next_conflict();
  /// Cuts a node of the second tree off; nothing happens where it is the root of a piece.
  void cut(int node);
  int cuts() const { return cuts_; }

  /// The pieces, when no conflict is left: terminals.
  std::vector<std::vector<int>> pieces() const;

 private:
  struct linked {
    std::vector<int> up, left, right;
    bool is_terminal(int node) const { return left[at(node)] < 0; }
    int sister(int node) const;
    /// The node and the branch below it go; its sister takes the place of their ancestor. Returns
    /// the sister, -1 where the node had none.
    int take_off(int node);
  };
  void note_sisters(int node);
  void finish_piece(int terminal);
  void join(int kept, int gone);

  linked a_, b_;
  std::vector<int> waiting_;    // internal nodes of the first tree that may have two terminals
  std::vector<int> joined_to_;  // by terminal: the one that stands for it; itself
  int cuts_ = 0;
};

}  // namespace zeb
