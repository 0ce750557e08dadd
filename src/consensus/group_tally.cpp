#include "consensus/group_tally.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "base/arena.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "console/progress.h"

namespace zeb {
namespace {

constexpr std::size_t polling_interval = 1024;  // groups

int count_in_play(int ntax, std::span<const std::uint8_t> excluded) {
  return ntax - static_cast<int>(std::count_if(excluded.begin(), excluded.end(),
                                               [](std::uint8_t e) { return e != 0; }));
}

}  // namespace

group_tally::group_tally(int ntax, std::span<const std::uint8_t> excluded)
    : sets_(ntax, excluded),
      taxa_in_play_(count_in_play(ntax, excluded)),
      index_(1024, -1),
      record_of_node_(at(2 * ntax), -1) {}

/// Room for the groups of one more tree.
bool group_tally::grow() {
  const std::size_t words = checked_product(at(sets_.ntax()), sets_.words());
  if (checked_product(words, sizeof(set_word)) + 64 > arena_free()) return false;
  free_rows_ = alloc_low<set_word>(words);
  return true;
}

int group_tally::find(int node) const {
  const set_word check = sets_.check(node);
  const std::size_t mask = index_.size() - 1;
  for (std::size_t place = check & mask;; place = (place + 1) & mask) {
    const int number = index_[place];
    if (number < 0) return -1;
    const group_record& r = records_[at(number)];
    if (r.check == check && r.size == sets_.size(node) && r.count >= min_count &&
        std::memcmp(r.words, sets_.set(node), sets_.words() * sizeof(set_word)) == 0)
      return number;
  }
}

void group_tally::index_record(int number) {
  const std::size_t mask = index_.size() - 1;
  std::size_t place = records_[at(number)].check & mask;
  while (index_[place] >= 0) place = (place + 1) & mask;
  index_[place] = number;
}

/// New record for the group of a node; -1 without room.
int group_tally::enter(int node) {
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

bool group_tally::count_tree_groups(const_tree_span tree, std::span<const std::uint8_t> weights,
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

bool groups_conflict(const group_record& a, const group_record& b) {
  bool only_a = a.first_word < b.first_word || a.last_word > b.last_word;
  bool only_b = b.first_word < a.first_word || b.last_word > a.last_word;
  bool both = false;
  const int end = std::min(a.last_word, b.last_word);
  for (int w = std::max(a.first_word, b.first_word); w <= end; ++w) {
    const set_word x = a.words[w];
    const set_word y = b.words[w];
    both = both || (x & y) != 0;
    only_a = only_a || (x & ~y) != 0;
    only_b = only_b || (y & ~x) != 0;
    if (both && only_a && only_b) return true;
  }
  return false;
}

// For each group only the most frequent contradiction matters. So the others are tried from the
// most frequent down, beginning with the first whose count and the group's don't sum to more than
// the trees, and the first that conflicts ends the search.
std::vector<int> group_tally::strongest_conflicts(int n_trees,
                                                  std::span<const int> of_records) const {
  std::vector<int> by_count(records_.size());
  std::iota(by_count.begin(), by_count.end(), 0);
  std::stable_sort(by_count.begin(), by_count.end(),
                   [&](int a, int b) { return records_[at(a)].count > records_[at(b)].count; });
  std::vector<int> strongest(of_records.size(), -1);
  for (std::size_t i = 0; i < of_records.size(); ++i) {
    if (i % polling_interval == 0) {
      show_progress("Comparing groups", static_cast<double>(i),
                    static_cast<double>(of_records.size()));
      check_interrupt();
    }
    const group_record& group = records_[at(of_records[i])];
    const int most = n_trees - group.count;
    auto other = std::partition_point(by_count.begin(), by_count.end(), [&](int number) {
      return records_[at(number)].count > most;
    });
    for (; other != by_count.end() && records_[at(*other)].count > 0; ++other)
      if (groups_conflict(group, records_[at(*other)])) {
        strongest[i] = *other;
        break;
      }
  }
  clear_progress();
  return strongest;
}

void group_tally::compare_groups(int n_trees) {
  std::vector<int> all(records_.size());
  std::iota(all.begin(), all.end(), 0);
  const std::vector<int> strongest = strongest_conflicts(n_trees, all);
  std::vector<int> counts;
  for (const group_record& record : records_) counts.push_back(record.count);
  for (std::size_t i = 0; i < records_.size(); ++i)
    if (strongest[i] >= 0) records_[i].count -= counts[at(strongest[i])];
}

}  // namespace zeb
