#include "parallel/tasks/swap_leader.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/interrupts.h"
#include "base/process.h"
#include "parallel/tasks/siblings.h"

namespace zeb {

swap_leader::swap_leader(search_context& context, const swap_orders& orders, held_tree start)
    : swap_party(context, orders.how != swap_orders::way::unsorted),
      best_(std::move(start)),
      works_(orders.how != swap_orders::way::controlled) {
  for (const std::int32_t number : orders.tasks)
    if (number != leader_of_swap) members_.push_back({.number = number});
}

/// A member that is lost has its share dealt out again, and is told in case that it lives.
void swap_leader::lose(member& which) {
  if (which.gone) return;
  which.gone = true;
  changed_ = true;
}

void swap_leader::take(member& from, const swap_message& message) {
  switch (message.word) {
    case swap_word::hello:
      from.greeted = true;
      return;
    case swap_word::done:
      from.done = from.done || message.version == best_.version;
      return;
    case swap_word::tree:
    case swap_word::leaving:
      if (!message.tree.empty() && is_better(message.score, best_.score)) {
        if (std::optional<held_tree> better = tree_of(message)) {
          better->version = best_.version;
          best_ = *std::move(better);
          changed_ = true;
        }
      }
      if (message.word == swap_word::tree) return;
      lose(from);
      send_to_sibling(from.number, swap_word::over);
      return;
    default:
      return;
  }
}

void swap_leader::take_messages() {
  for (member& m : members_) {
    if (m.gone) continue;
    while (const auto message = message_of_sibling(m.number)) take(m, *message);
  }
  test_members();
}

void swap_leader::test_members() {
  constexpr double seconds_between = 0.5;
  constexpr double seconds_between_beats = 10;
  const double now = wall_clock();
  if (now - tested_ < seconds_between) return;
  tested_ = now;
  const bool beat = now - told_ > seconds_between_beats;
  if (beat) told_ = now;
  for (member& m : members_) {
    if (m.gone) continue;
    if (!is_sibling_there(m.number) ||
        (beat && m.greeted && !send_to_sibling(m.number, swap_word::beat)))
      lose(m);
  }
}

void swap_leader::gather() {
  const auto is_expected = [](const member& m) { return !m.greeted && !m.gone; };
  while (!interrupted() && std::ranges::any_of(members_, is_expected)) {
    take_messages();
    rest();
  }
}

void swap_leader::announce() {
  changed_ = own_done_ = false;
  announced_ = wall_clock();
  ++best_.version;
  context_.best_score = best_.score;
  best_.share = 0;
  const auto there = std::ranges::count_if(members_, [](const member& m) { return !m.gone; });
  if (there == 0) works_ = true;
  best_.shares = static_cast<int>(there) + (works_ ? 1 : 0);
  swap_message message = message_of(swap_word::tree, best_);
  message.shares = best_.shares;
  message.share = works_ ? 1 : 0;
  // Nodes are numbered as all others number them: shares are dealt out by these numbers.
  if (const std::optional<held_tree> as_others = tree_of(message)) best_.tree = as_others->tree;
  for (member& m : members_) {
    if (m.gone) continue;
    m.done = false;
    if (!send_to_sibling(m.number, message)) lose(m);
    ++message.share;
  }
}

bool swap_leader::look(const search_data&, double score) {
  constexpr double seconds_between_announcements = 0.05;
  take_messages();
  if (changed_) return true;
  return is_better(score, best_.score) && wall_clock() - announced_ > seconds_between_announcements;
}

void swap_leader::swap_own_share() {
  held_tree own = best_;
  swap_share_of(own);
  if (is_better(own.score, best_.score)) {
    best_.tree = own.tree;
    best_.score = own.score;
    changed_ = true;
  } else if (!changed_ && !interrupted()) {
    own_done_ = true;
  }
}

bool swap_leader::all_done() const {
  return (own_done_ || !works_) &&
         std::ranges::all_of(members_, [](const member& m) { return m.done || m.gone; });
}

/// Those who are stopped in the midst may have better trees.
void swap_leader::dissolve() {
  for (member& m : members_)
    if (!m.gone && !send_to_sibling(m.number, swap_word::over)) m.gone = true;
  const double since = wall_clock();
  const auto is_there = [](const member& m) { return !m.gone; };
  while (std::ranges::any_of(members_, is_there) && wall_clock() - since < patience_of_swap()) {
    for (member& m : members_) {
      while (!m.gone) {
        const auto message = message_of_sibling(m.number);
        if (!message) break;
        if (message->word == swap_word::leaving) m.gone = true;
        if (message->tree.empty() || !is_better(message->score, best_.score)) continue;
        if (auto better = tree_of(*message)) best_ = *std::move(better);
      }
    }
    test_members();
    rest();
  }
}

held_tree swap_leader::run() {
  gather();
  announce();
  while (!interrupted() && (changed_ || !all_done())) {
    if (changed_) {
      announce();
    } else if (works_ && !own_done_) {
      swap_own_share();
    } else {
      take_messages();
      rest();
    }
  }
  dissolve();
  context_.best_score = best_.score;
  return best_;
}

}  // namespace zeb
