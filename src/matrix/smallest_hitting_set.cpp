// A non-additive character needs at least one step fewer than the states it must show, and a
// polymorphic cell is content with any one of its states: the minimum is a smallest hitting set.
// Branch and bound: cells that contain another cell are dropped (what hits the smaller hits them),
// states that occur only where another state occurs are dropped too, then the search branches on
// the states of a smallest cell, forbidding in each branch the states tried before. The bound is a
// greedy packing of disjoint cells, each of which needs a state of its own.
#include "matrix/smallest_hitting_set.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>

namespace zeb {
namespace {

using cell_list = std::vector<std::uint32_t>;

// Distinct cells, smallest first, without those that contain another one.
void keep_minimal_cells(cell_list& cells) {
  std::sort(cells.begin(), cells.end(), [](std::uint32_t a, std::uint32_t b) {
    const int na = std::popcount(a);
    const int nb = std::popcount(b);
    return na != nb ? na < nb : a < b;
  });
  cell_list kept;
  for (const std::uint32_t c : cells) {
    const auto inside = [c](std::uint32_t k) { return (c & k) == k; };
    if (std::none_of(kept.begin(), kept.end(), inside)) kept.push_back(c);
  }
  cells.swap(kept);
}

// A state whose cells are all cells of another state is never the better choice of the two.
void drop_dominated_states(cell_list& cells) {
  std::uint32_t all = 0;
  for (const std::uint32_t c : cells) all |= c;
  for (std::uint32_t rest = all; rest; rest &= rest - 1) {
    const std::uint32_t state = rest & (~rest + 1);
    std::uint32_t companions = all & ~state;  // states in every cell of `state`
    for (const std::uint32_t c : cells) {
      if (c & state) companions &= c;
    }
    if (!companions) continue;
    for (std::uint32_t& c : cells) c &= ~state;
    all &= ~state;
  }
}

// Cells with no state in common: each needs its own. `cells` has the smallest first.
int disjoint_cells(const cell_list& cells) {
  int count = 0;
  std::uint32_t used = 0;
  for (const std::uint32_t c : cells) {
    if (c & used) continue;
    used |= c;
    ++count;
  }
  return count;
}

// Lowers `best` to the size of a smallest hitting set of `cells` plus `taken`, if that is less.
void search(cell_list cells, int taken, int& best) {
  for (;;) {
    keep_minimal_cells(cells);
    if (cells.empty()) {
      best = std::min(best, taken);
      return;
    }
    const cell_list before = cells;
    drop_dominated_states(cells);
    keep_minimal_cells(cells);
    // Single states have no choice.
    std::uint32_t forced = 0;
    for (const std::uint32_t c : cells) {
      if (std::has_single_bit(c)) forced |= c;
    }
    taken += std::popcount(forced);
    std::erase_if(cells, [forced](std::uint32_t c) { return (c & forced) != 0; });
    if (cells == before) break;
  }
  if (taken + disjoint_cells(cells) >= best) return;
  const std::uint32_t chosen = cells.front();
  std::uint32_t forbidden = 0;
  for (std::uint32_t rest = chosen; rest; rest &= rest - 1) {
    const std::uint32_t state = rest & (~rest + 1);
    cell_list left;
    bool possible = true;
    for (const std::uint32_t c : cells) {
      if (c & state) continue;
      const std::uint32_t reduced = c & ~forbidden;
      possible = possible && reduced != 0;
      left.push_back(reduced);
    }
    if (possible) search(std::move(left), taken + 1, best);
    forbidden |= state;
  }
}

}  // namespace

int greedy_hitting_set(std::vector<std::uint32_t> cells) {
  keep_minimal_cells(cells);
  int taken = 0;
  while (!cells.empty()) {
    std::array<int, 32> hits{};
    for (const std::uint32_t c : cells) {
      for (std::uint32_t rest = c; rest; rest &= rest - 1) {
        ++hits[static_cast<std::size_t>(std::countr_zero(rest))];
      }
    }
    const auto most = std::max_element(hits.begin(), hits.end()) - hits.begin();
    std::erase_if(cells, [most](std::uint32_t c) { return (c >> most) & 1U; });
    ++taken;
  }
  return taken;
}

int smallest_hitting_set(std::vector<std::uint32_t> cells) {
  int best = greedy_hitting_set(cells);
  search(std::move(cells), 0, best);
  return best;
}

}  // namespace zeb
