// The tasks of a shared swap besides its leader.
#pragma once

#include <optional>

#include "base/interrupts.h"
#include "parallel/messages/contents.h"
#include "parallel/tasks/swap_party.h"

namespace zeb {

class swap_worker : public swap_party {
 public:
  swap_worker(search_context& context, const swap_orders& orders)
      : swap_party(context, orders.how != swap_orders::way::unsorted) {}
  /// False: the leader is gone.
  bool run();

 private:
  bool look(const search_data& data, double score) override;
  void take_messages();
  bool must_end() const { return over_ || leader_gone_ || interrupted(); }
  /// Is there a version that this task must go on with?
  bool has_new_version(double own_score) const {
    return newest_ && !is_better(own_score, newest_->score);
  }
  void wait_for_version();
  void send_tree(const held_tree& which, swap_word what);
  void leave();

  held_tree own_;
  std::optional<held_tree> newest_;  // that came while it was at work
  double sent_score_ = unknown_score;
  double sent_ = 0;  // wall clock, seconds
  double tested_ = 0;
  double told_ = 0;
  bool over_ = false;
  bool leader_gone_ = false;
};

}  // namespace zeb
