#include "engine/plain/range_optimisation.h"

#include <algorithm>

#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

int distance(const value_range& range, int value) {
  return std::max({0, range.low - value, value - range.high});
}

}  // namespace

void range_optimiser::add_character(int character, std::span<const value_range> cells) {
  characters_.push_back(character);
  cells_.emplace_back(cells.begin(), cells.end());
}

/// The sum of distances to the descendants' ranges is least between the two middle ones of all
/// their ends, and grows by two for each unit beyond, at least, until the next end.
void range_optimiser::down_node(int node, std::span<const int> below, polytomy_kind polytomies) {
  const std::size_t n = size();
  const std::size_t k = below.size();
  std::vector<int> ends(2 * k);
  for (std::size_t i = 0; i < n; ++i) {
    int least_high = 65535;
    int most_low = 0;
    for (std::size_t d = 0; d < k; ++d) {
      const value_range& r = down_[at(below[d]) * n + i];
      ends[2 * d] = r.low;
      ends[2 * d + 1] = r.high;
      least_high = std::min(least_high, r.high);
      most_low = std::max(most_low, r.low);
    }
    value_range& own = down_[at(node) * n + i];
    if (polytomies == polytomy_kind::soft) {
      own = {std::min(least_high, most_low), std::max(least_high, most_low)};
      steps_[i] += std::max(0, most_low - least_high);
      continue;
    }
    std::sort(ends.begin(), ends.end());
    own = {ends[k - 1], ends[k]};
    reach_[at(node) * n + i] = k > 1 ? value_range{ends[k - 2], ends[k + 1]} : own;
    for (const int d : below) steps_[i] += distance(down_[at(d) * n + i], own.low);
  }
}

void range_optimiser::optimise(std::span<const int> order, const descendant_lists& lists,
                               polytomy_kind polytomies, bool with_finals) {
  const std::size_t n = size();
  steps_.assign(n, 0);
  down_.resize(lists.nodes() * n);
  reach_.resize(down_.size());
  for (std::size_t t = 0; t < at(matrix.ntax); ++t)
    for (std::size_t i = 0; i < n; ++i) down_[t * n + i] = reach_[t * n + i] = cells_[i][t];
  std::vector<int> below;
  for (auto v = order.rbegin(); v != order.rend(); ++v) {
    below.clear();
    for (const int d : lists.children(*v)) below.push_back(d);
    if (!below.empty()) down_node(*v, below, polytomies);
  }
  if (!with_finals) return;
  final_.resize(down_.size());
  const auto root = static_cast<std::ptrdiff_t>(at(matrix.ntax) * n);
  std::copy_n(down_.begin() + root, n, final_.begin() + root);
  for (const int v : order)
    for (const int d : lists.children(v))
      for (std::size_t i = 0; i < n; ++i) {
        // The ancestor's ends, as far as the node may follow them without loss.
        const value_range& above = final_[at(v) * n + i];
        const value_range& best = down_[at(d) * n + i];
        const value_range& reach = reach_[at(d) * n + i];
        final_[at(d) * n + i] = {std::clamp(above.low, reach.low, best.high),
                                 std::clamp(above.high, best.low, reach.high)};
      }
}

}  // namespace zeb
