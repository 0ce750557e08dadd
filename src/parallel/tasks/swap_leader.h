// Task 0 of a shared swap: it has the best tree, and deals out its clips.
#pragma once

#include <vector>

#include "parallel/messages/contents.h"
#include "parallel/tasks/swap_party.h"

namespace zeb {

class swap_leader : public swap_party {
 public:
  swap_leader(search_context& context, const swap_orders& orders, held_tree start);
  /// Returns the tree that all of them came to.
  held_tree run();

 private:
  struct member {
    int number;
    bool greeted = false;
    bool done = false;
    bool gone = false;
  };

  bool look(const search_data& data, double score) override;
  void gather();
  void announce();
  void swap_own_share();
  void take_messages();
  void take(member& from, const swap_message& message);
  void test_members();
  void dissolve();
  void lose(member& which);
  bool all_done() const;

  held_tree best_;
  std::vector<member> members_;
  bool works_;            // it swaps itself
  bool changed_ = false;  // there is something to announce
  bool own_done_ = false;
  double announced_ = 0;  // wall clock, seconds
  double tested_ = 0;
  double told_ = 0;
};

}  // namespace zeb
