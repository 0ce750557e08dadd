#include "compare/trees/critical_cells.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include "base/indices.h"
#include "base/interrupts.h"
#include "compare/trees/values_of_file.h"
#include "console/progress.h"
#include "mapping/node_states.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

constexpr int most_cells_together = 4;
constexpr long most_combinations = 2'000;  // of one character

bool same_changes(const std::vector<apomorphy>& a, const std::vector<apomorphy>& b) {
  const auto same_values = [](const node_values& x, const node_values& y) {
    return x.states == y.states && x.range.low == y.range.low && x.range.high == y.range.high;
  };
  return std::equal(
      a.begin(), a.end(), b.begin(), b.end(), [&](const apomorphy& x, const apomorphy& y) {
        return x.node == y.node && same_values(x.from, y.from) && same_values(x.to, y.to);
      });
}

/// The differing cells of one character, which the matrix has as the first file does.
class character_test {
 public:
  character_test(std::span<const differing_cell> cells,
                 const std::array<const compared_tree_set*, 2>& sets,
                 const std::array<exclusive_groups, 2>& exclusive)
      : cells_(cells), sets_(sets), exclusive_(exclusive) {}

  /// By cell.
  std::vector<std::uint8_t> by_synapomorphies() const {
    const auto usual = synapomorphies();
    std::vector<std::uint8_t> critical;
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      const values_of_file other(1, cells_.subspan(i, 1));
      const auto changed = synapomorphies();
      critical.push_back(!same_changes(usual[0], changed[0]) ||
                         !same_changes(usual[1], changed[1]));
    }
    return critical;
  }

  /// Single cells; if none does it, the smallest combinations that do.
  std::vector<std::uint8_t> by_lengths(critical_cells& report) const {
    std::vector<std::uint8_t> critical(cells_.size(), 0);
    const std::int64_t usual = length_difference();
    long tried = 0;
    for (int together = 1; together <= most_cells_together && at(together) <= cells_.size();
         ++together) {
      const bool any = try_combinations(together, usual, critical, tried);
      report.most_cells = std::max(report.most_cells, together);
      if (any || tried >= most_combinations) break;
    }
    report.combinations += tried;
    return critical;
  }

 private:
  std::array<std::vector<apomorphy>, 2> synapomorphies() const {
    const std::vector<int> character = {cells_.front().character};
    return {synapomorphies_of(*sets_[0], exclusive_[0].nodes, character),
            synapomorphies_of(*sets_[1], exclusive_[1].nodes, character)};
  }

  std::int64_t steps_on(const compared_tree_set& set) const {
    std::int64_t sum = 0;
    for (const tree_shape& shape : set.shapes)
      sum += map_character(shape, cells_.front().character).steps;
    return sum;
  }
  /// Of the mean steps on the trees of the files, times the numbers of their trees.
  std::int64_t length_difference() const {
    return steps_on(*sets_[0]) * static_cast<std::int64_t>(sets_[1]->shapes.size()) -
           steps_on(*sets_[1]) * static_cast<std::int64_t>(sets_[0]->shapes.size());
  }

  bool try_combinations(int together, std::int64_t usual, std::vector<std::uint8_t>& critical,
                        long& tried) const {
    std::vector<std::size_t> chosen(at(together));
    for (std::size_t i = 0; i < chosen.size(); ++i) chosen[i] = i;
    bool any = false;
    do {
      check_interrupt();
      std::vector<differing_cell> cells;
      for (const std::size_t i : chosen) cells.push_back(cells_[i]);
      const values_of_file other(1, cells);
      ++tried;
      if (length_difference() == usual) continue;
      any = true;
      for (const std::size_t i : chosen) critical[i] = 1;
    } while (next_combination(chosen) && (together == 1 || tried < most_combinations));
    return any;
  }

  /// In lexical order; false after the last one.
  bool next_combination(std::vector<std::size_t>& chosen) const {
    for (std::size_t i = chosen.size(); i-- > 0;) {
      if (chosen[i] + (chosen.size() - i) >= cells_.size()) continue;
      ++chosen[i];
      for (std::size_t j = i + 1; j < chosen.size(); ++j) chosen[j] = chosen[j - 1] + 1;
      return true;
    }
    return false;
  }

  std::span<const differing_cell> cells_;
  const std::array<const compared_tree_set*, 2>& sets_;
  const std::array<exclusive_groups, 2>& exclusive_;
};

bool is_critical(critical_method method, bool by_synapomorphies, bool by_lengths) {
  switch (method) {
    case critical_method::synapomorphies:
      return by_synapomorphies;
    case critical_method::lengths:
      return by_lengths;
    case critical_method::both:
      return by_synapomorphies && by_lengths;
    default:
      return by_synapomorphies || by_lengths;
  }
}

}  // namespace

critical_cells find_critical_cells(const compared_results& results,
                                   const std::array<const compared_tree_set*, 2>& sets,
                                   const std::array<exclusive_groups, 2>& exclusive,
                                   critical_method method) {
  critical_cells found;
  const values_of_file first(0, results.cells);
  const auto total = static_cast<double>(results.cells.size());
  for (std::size_t begin = 0; begin < results.cells.size();) {
    show_progress("Critical cells", static_cast<double>(begin), total);
    const auto cells = cells_of(results.cells, results.cells[begin].character);
    begin += cells.size();
    if (!matrix.characters[at(cells.front().character)].active) continue;
    const character_test test(cells, sets, exclusive);
    const std::vector<std::uint8_t> none(cells.size(), 0);
    const auto changes = method == critical_method::lengths ? none : test.by_synapomorphies();
    const auto lengths = method == critical_method::synapomorphies ? none : test.by_lengths(found);
    for (std::size_t i = 0; i < cells.size(); ++i)
      if (is_critical(method, changes[i], lengths[i])) found.cells.push_back(cells[i]);
  }
  clear_progress();
  return found;
}

}  // namespace zeb
