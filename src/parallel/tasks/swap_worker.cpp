#include "parallel/tasks/swap_worker.h"

#include <algorithm>
#include <utility>

#include "base/process.h"
#include "parallel/tasks/siblings.h"

namespace zeb {

void swap_worker::take_messages() {
  constexpr double seconds_between_tests = 0.5;
  constexpr double seconds_between_beats = 10;
  while (const auto message = message_of_sibling(leader_of_swap)) {
    if (message->word == swap_word::over) over_ = true;
    if (message->word == swap_word::tree)
      if (auto tree = tree_of(*message)) newest_ = std::move(tree);
  }
  const double now = wall_clock();
  if (now - tested_ > seconds_between_tests) {
    tested_ = now;
    leader_gone_ = leader_gone_ || !is_sibling_there(leader_of_swap);
  }
  if (now - told_ > seconds_between_beats && !leader_gone_) {
    told_ = now;
    send_to_sibling(leader_of_swap, swap_word::beat);
  }
}

void swap_worker::send_tree(const held_tree& which, swap_word what) {
  sent_ = wall_clock();
  sent_score_ = which.score;
  leader_gone_ = !send_to_sibling(leader_of_swap, message_of(what, which)) || leader_gone_;
}

bool swap_worker::look(const search_data& data, double score) {
  constexpr double seconds_between_trees = 0.1;
  take_messages();
  if (must_end() || has_new_version(score)) return true;
  const double known = newest_ ? std::min(newest_->score, sent_score_) : sent_score_;
  if (is_better(score, known) && wall_clock() - sent_ > seconds_between_trees) {
    held_tree now = own_;
    now.tree.assign(data.tree.anc.begin(), data.tree.anc.begin() + data.nodes);
    now.score = score;
    send_tree(now, swap_word::tree);
  }
  return false;
}

void swap_worker::wait_for_version() {
  while (!must_end() && !has_new_version(own_.score)) {
    take_messages();
    rest();
  }
}

/// Has its last tree known to the leader, and takes whatever that has sent in the meantime.
void swap_worker::leave() {
  const double since = wall_clock();
  if (own_.tree.empty()) {
    send_to_sibling(leader_of_swap, swap_word::leaving);
  } else {
    send_tree(own_, swap_word::leaving);
  }
  while (!over_ && !leader_gone_ && wall_clock() - since < patience_of_swap()) {
    take_messages();
    rest();
  }
}

bool swap_worker::run() {
  while (message_of_sibling(leader_of_swap)) {
    // Of an earlier swap.
  }
  send_to_sibling(leader_of_swap, swap_word::hello);
  for (;;) {
    wait_for_version();
    if (must_end()) break;
    own_ = *std::exchange(newest_, std::nullopt);
    const double score_of_version = own_.score;
    sent_score_ = score_of_version;
    swap_share_of(own_);
    if (must_end()) break;
    if (has_new_version(own_.score)) continue;
    if (!is_better(own_.score, score_of_version)) {
      leader_gone_ = !send_to_sibling(leader_of_swap, swap_word::done, own_.version);
    } else if (is_better(own_.score, sent_score_)) {
      send_tree(own_, swap_word::tree);
    }
    // A version that is as good as what it has is the next one.
    if (!is_better(own_.score, score_of_version)) own_.score = unknown_score;
  }
  leave();
  return !leader_gone_;
}

}  // namespace zeb
