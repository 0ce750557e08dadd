// A tree taken to pieces and put together again.
//
// Clades are cut off by their links alone; then one pass over each piece makes the sets of all,
// which costs less than a wave for each cut as soon as there are some dozens. Pieces are joined one
// after the other, each by its root to the branch where that costs least, with a wave that repairs
// the sets (the same addition as in building a tree, of clades as well as of terminals).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "search/search_context.h"

namespace zeb {

class landmark_moves;

/// A clade that was cut off.
struct tree_piece {
  std::int32_t top;    // its highest node, or its terminal
  std::int32_t joint;  // the internal node by which it is joined again
  std::int32_t size;   // terminals that it had when it was cut
};

/// The tree in work, in pieces. The main piece holds terminal 0, and two terminals more at least.
class tree_in_pieces {
 public:
  /// Takes a binary tree of the search (internal numbering).
  tree_in_pieces(search_context& context, std::span<const std::int32_t> tree);
  /// Takes links that stand in `data.tree` already, with these pieces of them cut off.
  tree_in_pieces(search_context& context, std::vector<tree_piece> pieces);
  ~tree_in_pieces();
  tree_in_pieces(const tree_in_pieces&) = delete;
  tree_in_pieces& operator=(const tree_in_pieces&) = delete;

  /// Cuts off the clade of `node`, also within a piece. False, and nothing is changed, where the
  /// main piece or what the node hangs on would become too small.
  bool cut(int node);
  std::vector<tree_piece>& pieces() { return pieces_; }
  /// Makes the sets of all pieces. To be called once, before pieces are joined.
  void make_sets();
  /// Joins a piece to the main one where it costs least; of places as good one is taken at random.
  /// Under constraints terminals go where these let them; where they leave none, or clades go
  /// wrong, the whole tree breaks constraints.
  void join(const tree_piece& piece);
  /// Joins all pieces in their order, or until the search is stopped: then the rest is joined
  /// anywhere. `tree` becomes the whole tree.
  void join_all(std::span<std::int32_t> tree);

 private:
  int terminals_below(int node) const;
  void list_branches();
  int cheapest_branch(const tree_piece& piece);
  bool is_open(const tree_piece& piece, int branch) const;

  search_context& context_;
  search_data& data_;
  std::vector<tree_piece> pieces_;
  int main_size_ = 0;                          // terminals beside terminal 0; while pieces are cut
  std::vector<std::int32_t> piece_of_top_;     // by node; likewise
  std::vector<std::int32_t> branches_;         // of the main piece
  std::optional<group_tables> groups_;         // under constraints, while terminals are joined
  std::unique_ptr<landmark_moves> landmarks_;  // null: there are none
};

}  // namespace zeb
