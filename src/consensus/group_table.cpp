#include "consensus/group_table.h"

#include <algorithm>
#include <cstring>

#include "base/arena.h"
#include "base/indices.h"

namespace zeb {
namespace {

int count_in_play(int ntax, std::span<const std::uint8_t> excluded) {
  return ntax - static_cast<int>(std::count_if(excluded.begin(), excluded.end(),
                                               [](std::uint8_t e) { return e != 0; }));
}

}  // namespace

group_table::group_table(int ntax, std::span<const std::uint8_t> excluded)
    : sets_(ntax, excluded),
      taxa_in_play_(count_in_play(ntax, excluded)),
      index_(1024, -1),
      record_of_node_(at(2 * ntax), -1) {}

/// Room for the groups of one more tree.
bool group_table::grow() {
  const std::size_t words = checked_product(at(sets_.ntax()), sets_.words());
  if (checked_product(words, sizeof(set_word)) + 64 > arena_free()) return false;
  free_rows_ = alloc_low<set_word>(words);
  return true;
}

int group_table::find(int node) const {
  const set_word check = sets_.check(node);
  const std::size_t mask = index_.size() - 1;
  for (std::size_t slot = check & mask;; slot = (slot + 1) & mask) {
    const int number = index_[slot];
    if (number < 0) return -1;
    const group_record& r = records_[at(number)];
    if (r.check == check && r.size == sets_.size(node) && r.count >= min_count &&
        std::memcmp(r.words, sets_.set(node), sets_.words() * sizeof(set_word)) == 0)
      return number;
  }
}

void group_table::index_record(int number) {
  const std::size_t mask = index_.size() - 1;
  std::size_t slot = records_[at(number)].check & mask;
  while (index_[slot] >= 0) slot = (slot + 1) & mask;
  index_[slot] = number;
}

/// New record for the group of a node; -1 without room.
int group_table::enter(int node) {
  if (free_rows_.size() < sets_.words() && !grow()) return -1;
  set_word* words = free_rows_.data();
  free_rows_ = free_rows_.subspan(sets_.words());
  std::memcpy(words, sets_.set(node), sets_.words() * sizeof(set_word));
  int first = 0;
  int last = static_cast<int>(sets_.words()) - 1;
  while (first < last && words[first] == 0) ++first;
  while (last > first && words[last] == 0) --last;
  const int number = static_cast<int>(records_.size());
  records_.push_back({sets_.check(node), words, sets_.size(node), 0, 0, first, last});
  if (2 * records_.size() > index_.size()) {
    index_.assign(2 * index_.size(), -1);
    for (int i = 0; i < number; ++i) index_record(i);
  }
  index_record(number);
  return number;
}

bool group_table::count_tree_groups(const_tree_span tree, std::span<const std::uint8_t> weights,
                                    bool may_add) {
  sets_.build(tree);
  ++trees_counted_;
  groups_found_ = 0;
  std::fill(record_of_node_.begin(), record_of_node_.end(), -1);
  for (const int node : sets_.nodes()) {
    const int size = sets_.size(node);
    if (size < 2 || size >= taxa_in_play_) continue;
    int number = find(node);
    if (number < 0) {
      if (!may_add) continue;
      number = enter(node);
      if (number < 0) return false;
    }
    record_of_node_[at(node)] = number;
    // Nodes that differ by excluded taxa only are one group: it counts once.
    group_record& record = records_[at(number)];
    const bool has_weight = weights.empty() || weights[at(node)] != 0;
    if (!has_weight || record.seen_in == trees_counted_) continue;
    record.seen_in = trees_counted_;
    ++record.count;
    ++groups_found_;
  }
  return true;
}

}  // namespace zeb
