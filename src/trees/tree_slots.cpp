#include "trees/tree_slots.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"

namespace zeb {

namespace {

bool has_groups(const tree_slots& slots) { return !slots.group_rows.empty(); }

std::span<std::uint32_t> group_row(const tree_slots& slots, int number) {
  if (!has_groups(slots)) return {};
  return {slots.group_rows[at(number)], at(slots.group_words)};
}

void copy_slot(tree_slots& slots, int from, int to) {
  std::ranges::copy(slot_of(slots, from), slot_of(slots, to).begin());
  std::ranges::copy(group_row(slots, from), group_row(slots, to).begin());
  if (!slots.labels.empty()) slots.labels[at(to)] = slots.labels[at(from)];
}

/// Labels for exactly the trees there are, if there are any.
void fit_labels(tree_slots& slots) {
  if (!slots.labels.empty()) slots.labels.resize(at(slots.ntrees));
}

}  // namespace

void set_tree_count(tree_slots& slots, int count) {
  ALWAYS_CHECK(count >= 0 && count <= slots.maxtrees, "more trees than slots");
  fit_labels(slots);
  if (!slots.labels.empty()) slots.labels.resize(at(std::max(count, slots.ntrees)));
  // From here on nothing can fail.
  if (slots.ntrees == 0) slots.cut_short = false;
  for (int t = slots.ntrees; t < count; ++t) std::ranges::fill(group_row(slots, t), 0U);
  slots.ntrees = count;
  fit_labels(slots);
}

void select_trees(tree_slots& slots, std::span<const std::uint8_t> keep) {
  fit_labels(slots);
  int kept = 0;
  for (int t = 0; t < slots.ntrees; ++t) {
    if (!keep[at(t)]) continue;
    if (kept != t) copy_slot(slots, t, kept);
    ++kept;
  }
  slots.ntrees = kept;
  fit_labels(slots);
}

void reorder_trees(tree_slots& slots, std::span<const int> order) {
  fit_labels(slots);
  // Each tree comes into its place once: circles of moves, with one tree put aside for each.
  std::vector<std::uint8_t> done(order.size(), 0);
  std::vector<tree_node> first_tree(at(slots.nnodes));
  std::vector<std::uint32_t> first_groups(has_groups(slots) ? at(slots.group_words) : 0);
  for (int start = 0; start < static_cast<int>(order.size()); ++start) {
    if (done[at(start)] || order[at(start)] == start) continue;
    std::ranges::copy(slot_of(slots, start), first_tree.begin());
    std::ranges::copy(group_row(slots, start), first_groups.begin());
    const auto first_labels = slots.labels.empty() ? nullptr : slots.labels[at(start)];
    int place = start;
    for (int from = order[at(place)]; from != start; from = order[at(place)]) {
      copy_slot(slots, from, place);
      done[at(place)] = 1;
      place = from;
    }
    std::ranges::copy(first_tree, slot_of(slots, place).begin());
    std::ranges::copy(first_groups, group_row(slots, place).begin());
    if (!slots.labels.empty()) slots.labels[at(place)] = first_labels;
    done[at(place)] = 1;
  }
}

void copy_labels(const tree_slots& from, int here, tree_slots& to, int there) {
  if (at(here) >= from.labels.size()) return;
  to.labels.resize(at(to.ntrees));
  to.labels[at(there)] = from.labels[at(here)];
}

private_slots::private_slots(int capacity, int cells)
    : cells_(at(capacity) * at(cells)), rows_(at(capacity)) {
  for (int t = 0; t < capacity; ++t) rows_[at(t)] = cells_.data() + at(t) * at(cells);
  trees = rows_;
  maxtrees = capacity;
  nnodes = cells;
}

}  // namespace zeb
