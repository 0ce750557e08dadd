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

/// An additive character's states at the threshold: 1 some at or below it, 2 some above.
std::uint32_t states_in_column(const plain_column& column, std::uint32_t states) {
  if (column.threshold < 0) return states;
  const std::uint32_t below = (std::uint32_t{2} << column.threshold) - 1;
  return ((states & below) ? 1U : 0U) | ((states & ~below) ? 2U : 0U);
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
  for (int c = 0; c < matrix.nchar; ++c)
    if (characters[at(c)]) add_character(c, ignored_taxa);
  fill_cells(ignored_taxa);
  column_steps_.resize(columns_.size());
}

void plain_optimiser::add_character(int character, std::span<const std::uint8_t> ignored_taxa) {
  const character_record& record = matrix.characters[at(character)];
  if (record.type == landmark_data)
    error_end_f("Landmark characters (as %i) can't be optimized yet", character);
  if (record.is_sankoff) return with_costs_.add_character(character, ignored_taxa);
  std::uint32_t observed = 0;
  std::vector<value_range> ranges;
  for (int t = 0; t < matrix.ntax; ++t) {
    const bool silent = is_ignored(ignored_taxa, t) || says_nothing(character, cell(t, character));
    if (record.is_continuous) {
      const continuous_cell value = read_continuous_cell(t, character);
      ranges.push_back(silent ? value_range{} : value_range{value.low, value.high});
    } else if (!silent) {
      observed |= cell(t, character);
    }
  }
  if (record.is_continuous) {
    ranges_.add_character(character, ranges);
    return;
  }
  if (std::popcount(observed) < 2) return;  // no tree has steps in it
  if (!record.additive) {
    columns_.push_back({character, -1, observed});
    return;
  }
  const int lowest = std::countr_zero(observed);
  const int highest = 31 - std::countl_zero(observed);
  for (int threshold = lowest; threshold < highest; ++threshold)
    columns_.push_back({character, threshold, 3});
}

// A taxon after the other, as the passes go.
void plain_optimiser::fill_cells(std::span<const std::uint8_t> ignored_taxa) {
  observed_.reserve(columns_.size());
  for (const plain_column& column : columns_) observed_.push_back(column.observed);
  cells_.resize(at(matrix.ntax) * columns_.size());
  auto place = cells_.begin();
  for (int t = 0; t < matrix.ntax; ++t) {
    for (const plain_column& column : columns_) {
      const std::uint32_t states = cell(t, column.character);
      const bool silent = is_ignored(ignored_taxa, t) || says_nothing(column.character, states);
      *place++ = silent || states == 0 ? column.observed : states_in_column(column, states);
    }
  }
}

const std::uint32_t* plain_optimiser::down_sets(int node) const {
  if (node < matrix.ntax) return cells_.data() + at(node) * columns_.size() + at_hand_.first;
  return down_.data() + at(node - matrix.ntax) * at_hand_.width;
}

std::uint32_t* plain_optimiser::inner_row(std::vector<std::uint32_t>& sets, int node) const {
  return sets.data() + at(node - matrix.ntax) * at_hand_.width;
}

void plain_optimiser::down_polytomy(int node, std::span<const int> below,
                                    polytomy_kind polytomies) {
  std::vector<std::uint32_t> sets(below.size());
  std::int32_t* const steps = &column_steps_[at_hand_.first];
  for (std::size_t i = 0; i < at_hand_.width; ++i) {
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
      steps[i] += choice.size - 1;
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
    steps[i] += static_cast<std::int32_t>(below.size()) - most;
  }
}

void plain_optimiser::down_pass(const descendant_lists& lists, std::span<const int> root_first,
                                polytomy_kind polytomies) {
  std::vector<int> below;
  for (auto v = root_first.rbegin(); v != root_first.rend(); ++v) {
    below.clear();
    for (const int d : lists.children(*v)) below.push_back(d);
    if (below.size() == 2)
      plain_down(down_sets(below[0]), down_sets(below[1]), inner_row(down_, *v),
                 inner_row(reach_, *v), &column_steps_[at_hand_.first], at_hand_.width);
    else if (!below.empty())
      down_polytomy(*v, below, polytomies);
  }
}

void plain_optimiser::final_pass(const descendant_lists& lists, std::span<const int> root_first) {
  const std::size_t n = columns_.size();
  final_.resize(lists.nodes() * n);
  std::copy_n(down_sets(matrix.ntax), n, &final_[at(matrix.ntax) * n]);
  for (const int v : root_first)
    for (const int d : lists.children(v))
      plain_final(&final_[at(v) * n], down_sets(d),
                  d < matrix.ntax ? down_sets(d) : inner_row(reach_, d), observed_.data(),
                  &final_[at(d) * n], n);
}

void plain_optimiser::optimise(const_tree_span tree, polytomy_kind polytomies, kept_sets keep) {
  // Slices that stay in the processor's cache.
  constexpr std::size_t columns_of_slice = 1024;
  const int ntax = matrix.ntax;
  const std::size_t n = columns_.size();
  std::fill(column_steps_.begin(), column_steps_.end(), 0);
  std::fill(steps_.begin(), steps_.end(), 0);
  const descendant_lists lists = descendants_of(tree, ntax);
  const std::vector<int> order = internal_nodes_root_first(lists, ntax);
  if (has_continuous()) {
    ranges_.optimise(order, lists, polytomies, keep == kept_sets::final);
    for (std::size_t i = 0; i < ranges_.size(); ++i)
      steps_[at(ranges_.character(i))] = ranges_.steps(i);
  }
  with_costs_.optimise(order, lists, polytomies, keep == kept_sets::final);
  for (std::size_t i = 0; i < with_costs_.size(); ++i)
    steps_[at(with_costs_.character(i))] = with_costs_.steps(i);
  if (n == 0) return;
  const std::size_t widest = keep == kept_sets::none ? std::min(n, columns_of_slice) : n;
  const std::size_t inner_nodes = at(std::max(node_limit(tree, ntax) - ntax, 1));
  down_.resize(inner_nodes * widest);
  reach_.resize(inner_nodes * widest);
  for (at_hand_.first = 0; at_hand_.first < n; at_hand_.first += widest) {
    at_hand_.width = std::min(widest, n - at_hand_.first);
    down_pass(lists, order, polytomies);
  }
  at_hand_.first = 0;
  for (std::size_t i = 0; i < n; ++i) steps_[at(columns_[i].character)] += column_steps_[i];
  if (keep == kept_sets::final) final_pass(lists, order);
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
