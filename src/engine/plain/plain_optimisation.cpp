#include "engine/plain/plain_optimisation.h"

#include <algorithm>
#include <array>
#include <bit>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"
#include "matrix/smallest_hitting_set.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// Sets of a node with two descendants: the intersection, or the union where it is empty, which is
/// a step. `reach` gets the states that cost at most one step more.
void plain_down(const std::uint32_t* left, const std::uint32_t* right, std::uint32_t* down,
                std::uint32_t* reach, std::int32_t* steps, std::size_t columns) noexcept {
  for (std::size_t i = 0; i < columns; ++i) {
    const std::uint32_t both = left[i] & right[i];
    const std::uint32_t either = left[i] | right[i];
    const std::uint32_t failed = both ? 0 : ~std::uint32_t{0};
    down[i] = both | (either & failed);
    reach[i] = either | failed;
    steps[i] += static_cast<std::int32_t>(failed & 1);
  }
}

/// Final sets from the ancestor's; `observed` has the states that occur in each column.
void plain_final(const std::uint32_t* ancestor, const std::uint32_t* down,
                 const std::uint32_t* reach, const std::uint32_t* observed, std::uint32_t* final,
                 std::size_t columns) noexcept {
  for (std::size_t i = 0; i < columns; ++i) {
    const std::uint32_t own = ((ancestor[i] & reach[i]) | down[i]) & observed[i];
    final[i] = (ancestor[i] & ~down[i]) == 0 ? ancestor[i] : own;
  }
}

bool is_ignored(std::span<const std::uint8_t> ignored, int taxon) {
  return !ignored.empty() && ignored[at(taxon)] != 0;
}

/// Fewest states that meet all the sets, and the states of all such choices.
struct hitting_states {
  int size = 0;
  std::uint32_t states = 0;
};
hitting_states smallest_choices(std::vector<std::uint32_t> sets) {
  std::uint32_t single = 0;
  for (const std::uint32_t s : sets)
    if (std::has_single_bit(s)) single |= s;
  std::erase_if(sets, [single](std::uint32_t s) { return (s & single) != 0; });
  if (sets.empty()) return {std::popcount(single), single};
  const int size = smallest_hitting_set(sets);
  std::uint32_t states = 0;
  std::uint32_t open = 0;  // states not tried yet
  for (const std::uint32_t s : sets) open |= s;
  for (; open; open &= open - 1) {
    const std::uint32_t state = open & (~open + 1);
    std::vector<std::uint32_t> unmet = sets;
    std::erase_if(unmet, [state](std::uint32_t s) { return (s & state) != 0; });
    if (smallest_hitting_set(std::move(unmet)) == size - 1) states |= state;
  }
  return {std::popcount(single) + size, single | states};
}

}  // namespace

std::vector<std::uint8_t> scored_characters() {
  std::vector<std::uint8_t> marks(at(matrix.nchar), 0);
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    marks[at(c)] = record.active && record.weight != 0;
  }
  return marks;
}

plain_optimiser::plain_optimiser(std::span<const std::uint8_t> characters,
                                 std::span<const std::uint8_t> ignored_taxa)
    : steps_(at(matrix.nchar), 0) {
  std::vector<std::uint32_t> by_column;
  cells_.clear();
  for (int c = 0; c < matrix.nchar; ++c)
    if (characters[at(c)]) add_character(c, ignored_taxa);
  // Cells were added column after column; passes go node by node.
  by_column.swap(cells_);
  cells_.resize(by_column.size());
  for (std::size_t i = 0; i < columns_.size(); ++i)
    for (std::size_t t = 0; t < at(matrix.ntax); ++t)
      cells_[t * columns_.size() + i] = by_column[i * at(matrix.ntax) + t];
  column_steps_.resize(columns_.size());
}

void plain_optimiser::add_character(int character, std::span<const std::uint8_t> ignored_taxa) {
  const character_record& record = matrix.characters[at(character)];
  if (record.type == landmark_data)
    error_end_f("Landmark characters (as %i) can't be optimized yet", character);
  if (record.is_sankoff) return with_costs_.add_character(character, ignored_taxa);
  std::vector<std::uint32_t> cells(at(matrix.ntax));
  std::uint32_t observed = 0;
  std::vector<value_range> ranges;
  for (int t = 0; t < matrix.ntax; ++t) {
    const bool silent = is_ignored(ignored_taxa, t) || says_nothing(character, cell(t, character));
    if (record.is_continuous) {
      const continuous_cell value = read_continuous_cell(t, character);
      ranges.push_back(silent ? value_range{} : value_range{value.low, value.high});
      continue;
    }
    cells[at(t)] = silent ? 0 : cell(t, character);
    observed |= cells[at(t)];
  }
  if (record.is_continuous) {
    ranges_.add_character(character, ranges);
    return;
  }
  if (std::popcount(observed) < 2) return;  // no tree has steps in it
  if (!record.additive) {
    add_column({character, -1, observed}, cells);
    return;
  }
  std::vector<std::uint32_t> sides(cells.size());
  const int lowest = std::countr_zero(observed);
  const int highest = 31 - std::countl_zero(observed);
  for (int threshold = lowest; threshold < highest; ++threshold) {
    const std::uint32_t below = (std::uint32_t{2} << threshold) - 1;
    for (std::size_t t = 0; t < cells.size(); ++t)
      sides[t] = ((cells[t] & below) ? 1U : 0U) | ((cells[t] & ~below) ? 2U : 0U);
    add_column({character, threshold, 3}, sides);
  }
}

void plain_optimiser::add_column(const plain_column& column, std::span<const std::uint32_t> cells) {
  columns_.push_back(column);
  observed_.push_back(column.observed);
  for (const std::uint32_t c : cells) cells_.push_back(c ? c : column.observed);
}

void plain_optimiser::down_polytomy(int node, std::span<const int> below,
                                    polytomy_kind polytomies) {
  const std::size_t n = columns_.size();
  std::vector<std::uint32_t> sets(below.size());
  for (std::size_t i = 0; i < n; ++i) {
    std::uint32_t either = 0;
    for (std::size_t k = 0; k < below.size(); ++k) {
      sets[k] = down_[at(below[k]) * n + i];
      either |= sets[k];
    }
    std::uint32_t& d = down_[at(node) * n + i];
    std::uint32_t& reach = reach_[at(node) * n + i];
    if (polytomies == polytomy_kind::soft) {
      const hitting_states choice = smallest_choices(sets);
      d = choice.states;
      if (choice.size == 1)
        for (const std::uint32_t s : sets) d &= s;
      reach = choice.size > 1 ? ~std::uint32_t{0} : either;
      column_steps_[i] += choice.size - 1;
      continue;
    }
    std::array<int, 32> count{};
    int most = 0;
    for (const std::uint32_t s : sets)
      for (std::uint32_t rest = s; rest; rest &= rest - 1)
        most = std::max(most, ++count[at(std::countr_zero(rest))]);
    d = reach = 0;
    for (int s = 0; s < 32; ++s) {
      if (count[at(s)] == most) d |= std::uint32_t{1} << s;
      if (count[at(s)] >= most - 1) reach |= std::uint32_t{1} << s;
    }
    column_steps_[i] += static_cast<std::int32_t>(below.size()) - most;
  }
}

void plain_optimiser::optimise(const_tree_span tree, polytomy_kind polytomies, bool with_finals) {
  const int ntax = matrix.ntax;
  const std::size_t n = columns_.size();
  std::fill(column_steps_.begin(), column_steps_.end(), 0);
  std::fill(steps_.begin(), steps_.end(), 0);
  const descendant_lists lists = descendants_of(tree, ntax);
  const std::vector<int> order = internal_nodes_root_first(lists, ntax);
  if (has_continuous()) {
    ranges_.optimise(order, lists, polytomies, with_finals);
    for (std::size_t i = 0; i < ranges_.size(); ++i)
      steps_[at(ranges_.character(i))] = ranges_.steps(i);
  }
  with_costs_.optimise(order, lists, polytomies, with_finals);
  for (std::size_t i = 0; i < with_costs_.size(); ++i)
    steps_[at(with_costs_.character(i))] = with_costs_.steps(i);
  if (n == 0) return;
  const std::size_t size = at(std::max(node_limit(tree, ntax), ntax + 1)) * n;
  down_.resize(size);
  reach_.resize(size);
  std::copy(cells_.begin(), cells_.end(), down_.begin());
  std::vector<int> below;
  for (auto v = order.rbegin(); v != order.rend(); ++v) {
    below.clear();
    for (const int d : lists.children(*v)) below.push_back(d);
    if (below.size() == 2)
      plain_down(&down_[at(below[0]) * n], &down_[at(below[1]) * n], &down_[at(*v) * n],
                 &reach_[at(*v) * n], column_steps_.data(), n);
    else if (!below.empty())
      down_polytomy(*v, below, polytomies);
  }
  for (std::size_t i = 0; i < n; ++i) steps_[at(columns_[i].character)] += column_steps_[i];
  if (!with_finals) return;
  final_.resize(size);
  for (std::size_t i = 0; i < n; ++i) final_[at(ntax) * n + i] = down_[at(ntax) * n + i];
  for (const int v : order)
    for (const int d : lists.children(v))
      plain_final(&final_[at(v) * n], &down_[at(d) * n],
                  d < ntax ? &down_[at(d) * n] : &reach_[at(d) * n], observed_.data(),
                  &final_[at(d) * n], n);
}

double plain_optimiser::score() const {
  std::int64_t steps = 0;
  std::int64_t thousandths = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    (record.is_continuous ? thousandths : steps) += record.weight * steps_[at(c)];
  }
  return static_cast<double>(steps) + static_cast<double>(thousandths) / 1000.0;
}

}  // namespace zeb
