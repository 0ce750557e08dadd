#include "parallel/tasks/swap_party.h"

#include <unistd.h>

#include <algorithm>
#include <numeric>

#include "base/indices.h"
#include "base/process.h"
#include "engine/passes/conversions.h"
#include "engine/passes/passes.h"
#include "parallel/settings.h"
#include "search/moves/clip_order.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "trees/tree_record.h"
#include "trees/tree_store.h"

namespace zeb {

double patience_of_swap() { return 2.0 * parallel.communication_time + 5; }

swap_message swap_party::message_of(swap_word what, const held_tree& which) const {
  swap_message message;
  message.word = what;
  message.version = which.version;
  message.score = which.score;
  message.tree.resize(at(store.nnodes));
  to_buffer(context_.data, which.tree, message.tree);
  return message;
}

/// None: it isn't a tree of these data.
std::optional<held_tree> swap_party::tree_of(const swap_message& message) const {
  const search_data& data = context_.data;
  if (message.tree.size() != at(store.nnodes) ||
      !check_tree_record(message.tree, data.all_taxa).empty())
    return std::nullopt;
  held_tree held{std::vector<std::int32_t>(at(data.nodes)), message.score, message.version,
                 message.share, message.shares};
  if (!to_internal(data, message.tree, held.tree, true)) return std::nullopt;
  return held;
}

bool swap_party::look_now_and_then(void* receiver, const search_data& data, double score) {
  constexpr double seconds_between = 0.005;
  auto* const party = static_cast<swap_party*>(receiver);
  const double now = wall_clock();
  if (now - party->last_look_ < seconds_between) return false;
  party->last_look_ = now;
  return party->look(data, score);
}

void swap_party::swap_share_of(held_tree& own) {
  search_data& data = context_.data;
  std::vector<std::int32_t> order(at(data.nodes));
  std::iota(order.begin(), order.end(), 0);
  own.score = tree_length(data, own.tree);
  if (sorted_) promising_clips_first(data, order);
  std::vector<std::uint8_t> mine(order.size(), 0);
  std::vector<std::int32_t> first;
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (static_cast<int>(i % at(own.shares)) != own.share) continue;
    mine[at(order[i])] = 1;
    first.push_back(order[i]);
  }
  const swap_share share{mine, look_now_and_then, this};
  std::ranges::copy(own.tree, context_.working_tree.begin());
  own.score = tbr_swap(context_, context_.working_tree, {.clips_first = first, .share = &share});
  own.tree.assign(context_.working_tree.begin(), context_.working_tree.end());
  if (context_.best_score < 0 || own.score < context_.best_score) context_.best_score = own.score;
}

void swap_party::rest() {
  constexpr useconds_t between = 2'000;  // microseconds
  poll_search(context_);
  usleep(between);
}

}  // namespace zeb
