// How many terminals each part of one tree shares with each part of another, pair of nodes by pair
// of nodes.
#pragma once

#include <cstdint>
#include <vector>

#include "base/indices.h"
#include "distances/cut_trees.h"

namespace zeb {

/// Terminals that the nodes of one tree share with every node of another, a row for each node of
/// the first one. A row lives from when it is made until its ancestor's is: with larger clades
/// first there are few at a time.
class shared_terminal_rows {
 public:
  shared_terminal_rows(const cut_tree& a, const cut_tree& b);

  /// Calls `visit` with each internal node of the first tree, when the rows of all its descendants
  /// are there.
  template <class function>
  void for_each_node(const function& visit) {
    for (const int node : order_) {
      for (const int child : a_.children(node))
        if (child < a_.terminals) make_terminal_row(child);
      visit(node);
      make_row(node);
    }
  }
  /// By node of the other tree.
  const std::int32_t* row(int node) const { return rows_[at(row_of_[at(node)])].data(); }

 private:
  int free_row();
  void make_terminal_row(int terminal);
  void make_row(int node);

  const cut_tree& a_;
  const cut_tree& b_;
  std::vector<int> order_;  // internal nodes, each after its descendants
  std::vector<int> row_of_;
  std::vector<std::vector<std::int32_t>> rows_;
  std::vector<int> free_;
};

}  // namespace zeb
