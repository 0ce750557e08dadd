// What the leader of a shared swap and the other tasks have in common.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/scores.h"
#include "parallel/messages/swap_message.h"
#include "search/search_context.h"

namespace zeb {

constexpr int leader_of_swap = 0;  // among the tasks

/// Seconds that a task which is asked to end may take.
double patience_of_swap();

/// A tree as this process has it, in the numbering of the search.
struct held_tree {
  std::vector<std::int32_t> tree;
  double score = unknown_score;
  int version = 0;  // of the leader, from which it comes
  int share = 0;
  int shares = 1;
};

class swap_party {
 public:
  swap_party(search_context& search, bool sorted)
      : context_(search), kind_(kind_of_scores(search.data)), sorted_(sorted) {}
  swap_party(const swap_party&) = delete;
  swap_party& operator=(const swap_party&) = delete;
  virtual ~swap_party() = default;

 protected:
  /// Called now and then in the midst of a swap that has come to this score. True: it is to end.
  virtual bool look(const search_data& data, double score) = 0;

  bool is_better(double a, double b) const { return is_better_score(a, b, kind_); }
  swap_message message_of(swap_word what, const held_tree& which) const;
  std::optional<held_tree> tree_of(const swap_message& message) const;
  /// Swaps this process's share of the tree, which becomes what was found.
  void swap_share_of(held_tree& own);
  void rest();

  search_context& context_;

 private:
  static bool look_now_and_then(void* receiver, const search_data& data, double score);

  score_kind kind_;
  bool sorted_;
  double last_look_ = 0;
};

}  // namespace zeb
