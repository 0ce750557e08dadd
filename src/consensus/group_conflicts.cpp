// Which groups contradict each other. For each group only the most frequent contradiction matters,
// so the others are tried from the most frequent down, beginning with the first whose count and
// the group's don't sum to more than the trees, and the first in conflict ends the search.
#include <algorithm>
#include <numeric>

#include "base/indices.h"
#include "base/process.h"
#include "consensus/group_table.h"
#include "console/output.h"

namespace zeb {
namespace {

constexpr std::size_t polling_interval = 1024;  // groups

}  // namespace

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

std::vector<int> group_table::largest_conflicts(int n_trees,
                                                std::span<const int> of_records) const {
  std::vector<int> by_count(records_.size());
  std::iota(by_count.begin(), by_count.end(), 0);
  std::stable_sort(by_count.begin(), by_count.end(),
                   [&](int a, int b) { return records_[at(a)].count > records_[at(b)].count; });
  std::vector<int> largest(of_records.size(), 0);
  for (std::size_t i = 0; i < of_records.size(); ++i) {
    if (i % polling_interval == 0) {
      show_progress("Comparing groups", static_cast<double>(i),
                    static_cast<double>(of_records.size()));
      check_interrupt(1);
    }
    const group_record& group = records_[at(of_records[i])];
    const int most = n_trees - group.count;
    auto other = std::partition_point(by_count.begin(), by_count.end(), [&](int number) {
      return records_[at(number)].count > most;
    });
    for (; other != by_count.end() && records_[at(*other)].count > 0; ++other)
      if (groups_conflict(group, records_[at(*other)])) {
        largest[i] = records_[at(*other)].count;
        break;
      }
  }
  clear_progress();
  return largest;
}

void group_table::compare_groups(int n_trees) {
  std::vector<int> all(records_.size());
  std::iota(all.begin(), all.end(), 0);
  const std::vector<int> largest = largest_conflicts(n_trees, all);
  for (std::size_t i = 0; i < records_.size(); ++i) records_[i].count -= largest[i];
}

}  // namespace zeb
