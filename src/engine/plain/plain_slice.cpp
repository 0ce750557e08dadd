#include "engine/plain/plain_slice.h"

#include <algorithm>
#include <array>
#include <bit>

#include "base/errors.h"
#include "base/indices.h"
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

/// An additive character's states at the threshold: 1 some at or below it, 2 some above.
std::uint32_t states_in_column(const plain_column& column, std::uint32_t states) {
  if (column.threshold < 0) return states;
  const std::uint32_t below = (std::uint32_t{2} << column.threshold) - 1;
  return ((states & below) ? 1U : 0U) | ((states & ~below) ? 2U : 0U);
}

/// Columns that are filled together: those of one ordered character, or of neighbouring unordered
/// ones.
struct column_run {
  std::size_t first;
  std::size_t end;
};
std::vector<column_run> runs_of(std::span<const plain_column> columns) {
  std::vector<column_run> runs;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const bool ordered = columns[i].threshold >= 0;
    const bool goes_on = i > 0 && (columns[i - 1].threshold >= 0) == ordered &&
                         columns[i].character == columns[i - 1].character + (ordered ? 0 : 1);
    if (!goes_on) runs.push_back({i, i});
    runs.back().end = i + 1;
  }
  return runs;
}

/// Cells of neighbouring characters; those that say nothing may have any of the states observed.
/// The compiler makes vectors of this.
template <class word>
void fill_unordered(const word* cells, const std::uint32_t* mask, const std::uint32_t* silent,
                    const std::uint32_t* observed, std::uint32_t* sets, std::size_t n) noexcept {
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint32_t states = cells[i];
    const bool says_nothing = (states == 0) | ((states & mask[i]) == silent[i]);
    sets[i] = says_nothing ? observed[i] : states;
  }
}

/// The lowest and the highest state of an additive character.
int lowest_state(const plain_character& one) { return std::countr_zero(one.observed); }
int highest_state(const plain_character& one) { return 31 - std::countl_zero(one.observed); }

}  // namespace

std::size_t columns_worth(const plain_character& one) {
  const character_record& record = matrix.characters[at(one.character)];
  if (record.is_continuous || record.is_sankoff) return 3;
  if (std::popcount(one.observed) < 2) return 0;
  return record.additive ? at(highest_state(one) - lowest_state(one)) : 1;
}

std::size_t bytes_of_column(int ntax) {
  constexpr std::size_t sets_of_taxon = 5;  // its cell; down, reach and final; final of a terminal
  return sets_of_taxon * sizeof(std::uint32_t) * at(ntax);
}

void plain_slice::load(std::span<const plain_character> characters,
                       std::span<const std::uint8_t> ignored_taxa) {
  columns_.clear();
  observed_.clear();
  ranges_ = {};
  with_costs_ = {};
  silent_columns silent;
  for (const plain_character& one : characters) {
    add_character(one, ignored_taxa);
    silent.mask.resize(columns_.size(), one.silent.mask);
    silent.silent.resize(columns_.size(), one.silent.silent);
  }
  for (const plain_column& column : columns_) observed_.push_back(column.observed);
  switch (matrix.cell_bytes) {
    case 1:
      return fill_cells<std::uint8_t>(matrix.rows8, silent, ignored_taxa);
    case 2:
      return fill_cells<std::uint16_t>(matrix.rows16, silent, ignored_taxa);
    default:
      return fill_cells<std::uint32_t>(matrix.rows32, silent, ignored_taxa);
  }
}

void plain_slice::add_character(const plain_character& one,
                                std::span<const std::uint8_t> ignored_taxa) {
  const character_record& record = matrix.characters[at(one.character)];
  if (record.is_sankoff) return with_costs_.add_character(one.character, ignored_taxa);
  if (record.is_continuous) {
    std::vector<value_range> ranges;
    for (int t = 0; t < matrix.ntax; ++t) {
      const bool silent = is_ignored(ignored_taxa, t) || one.silent.matches(cell(t, one.character));
      const continuous_cell value = read_continuous_cell(t, one.character);
      ranges.push_back(silent ? value_range{} : value_range{value.low, value.high});
    }
    return ranges_.add_character(one.character, ranges);
  }
  if (std::popcount(one.observed) < 2) return;  // no tree has steps in it
  if (!record.additive) {
    columns_.push_back({one.character, -1, one.observed});
    return;
  }
  for (int threshold = lowest_state(one); threshold < highest_state(one); ++threshold)
    columns_.push_back({one.character, threshold, 3});
}

// A taxon after the other, as the passes go.
template <class word>
void plain_slice::fill_cells(std::span<word* const> rows, const silent_columns& silent,
                             std::span<const std::uint8_t> ignored_taxa) {
  const std::vector<column_run> runs = runs_of(columns_);
  cells_.resize(at(matrix.ntax) * columns_.size());
  for (int t = 0; t < matrix.ntax; ++t) {
    std::uint32_t* const sets = cells_.data() + at(t) * columns_.size();
    if (is_ignored(ignored_taxa, t)) {
      std::copy(observed_.begin(), observed_.end(), sets);
      continue;
    }
    for (const column_run& run : runs) {
      const std::size_t first = run.first;
      const word* const cells = rows[at(t)] + columns_[first].character;
      if (columns_[first].threshold < 0) {
        fill_unordered(cells, &silent.mask[first], &silent.silent[first], &observed_[first],
                       sets + first, run.end - first);
        continue;
      }
      const bool says_nothing =
          *cells == 0 || (*cells & silent.mask[first]) == silent.silent[first];
      for (std::size_t i = first; i < run.end; ++i)
        sets[i] = says_nothing ? observed_[i] : states_in_column(columns_[i], *cells);
    }
  }
}

const std::uint32_t* plain_slice::down_sets(int node) const {
  const std::size_t n = columns_.size();
  return node < matrix.ntax ? cells_.data() + at(node) * n
                            : down_.data() + at(node - matrix.ntax) * n;
}

std::uint32_t* plain_slice::inner_row(std::vector<std::uint32_t>& sets, int node) const {
  return sets.data() + at(node - matrix.ntax) * columns_.size();
}

void plain_slice::down_polytomy(int node, std::span<const int> below, polytomy_kind polytomies) {
  std::vector<std::uint32_t> sets(below.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    std::uint32_t either = 0;
    for (std::size_t k = 0; k < below.size(); ++k) {
      sets[k] = down_sets(below[k])[i];
      either |= sets[k];
    }
    std::uint32_t& d = inner_row(down_, node)[i];
    std::uint32_t& reach = inner_row(reach_, node)[i];
    if (polytomies == polytomy_kind::soft) {
      const hitting_states choice = smallest_choices(sets);
      d = choice.states;
      if (choice.size == 1)
        for (const std::uint32_t s : sets) d &= s;
      reach = choice.size > 1 ? ~std::uint32_t{0} : either;
      steps_[i] += choice.size - 1;
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
    steps_[i] += static_cast<std::int32_t>(below.size()) - most;
  }
}

void plain_slice::down_pass(const descendant_lists& lists, std::span<const int> order,
                            polytomy_kind polytomies) {
  std::vector<int> below;
  for (auto v = order.rbegin(); v != order.rend(); ++v) {
    below.clear();
    for (const int d : lists.children(*v)) below.push_back(d);
    if (below.size() == 2)
      plain_down(down_sets(below[0]), down_sets(below[1]), inner_row(down_, *v),
                 inner_row(reach_, *v), steps_.data(), columns_.size());
    else if (!below.empty())
      down_polytomy(*v, below, polytomies);
  }
}

void plain_slice::final_pass(const descendant_lists& lists, std::span<const int> order) {
  const std::size_t n = columns_.size();
  final_.resize(lists.nodes() * n);
  std::copy_n(down_sets(matrix.ntax), n, final_.data() + at(matrix.ntax) * n);
  for (const int v : order)
    for (const int d : lists.children(v))
      plain_final(final_.data() + at(v) * n, down_sets(d),
                  d < matrix.ntax ? down_sets(d) : inner_row(reach_, d), observed_.data(),
                  final_.data() + at(d) * n, n);
}

void plain_slice::optimise(std::span<const int> order, const descendant_lists& lists,
                           polytomy_kind polytomies, bool with_finals) {
  ranges_.optimise(order, lists, polytomies, with_finals);
  with_costs_.optimise(order, lists, polytomies, with_finals);
  const std::size_t inner_nodes = lists.nodes() - at(matrix.ntax);
  steps_.assign(columns_.size(), 0);
  down_.resize(inner_nodes * columns_.size());
  reach_.resize(down_.size());
  down_pass(lists, order, polytomies);
  if (with_finals) final_pass(lists, order);
}

void plain_slice::give_steps(std::span<std::int64_t> steps) const {
  for (const plain_column& column : columns_) steps[at(column.character)] = 0;
  for (std::size_t i = 0; i < columns_.size(); ++i) steps[at(columns_[i].character)] += steps_[i];
  for (std::size_t i = 0; i < ranges_.size(); ++i)
    steps[at(ranges_.character(i))] = ranges_.steps(i);
  for (std::size_t i = 0; i < with_costs_.size(); ++i)
    steps[at(with_costs_.character(i))] = with_costs_.steps(i);
}

}  // namespace zeb
