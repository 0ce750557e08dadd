#include "engine/plain/plain_optimisation.h"

#include <algorithm>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/hooks.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// Columns of a slice: a small part of what `mxram` gives, however small that is.
std::size_t columns_in_memory() {
  constexpr std::size_t least_bytes = 4'000'000;
  return std::max(least_bytes, arena.size / 8) / bytes_of_column(matrix.ntax);
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
                                 std::span<const std::uint8_t> ignored_taxa,
                                 std::size_t most_columns)
    : ignored_taxa_(ignored_taxa.begin(), ignored_taxa.end()), steps_(at(matrix.nchar), 0) {
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!characters[at(c)]) continue;
    const character_record& record = matrix.characters[at(c)];
    if (record.type == landmark_data) {
      if (!landmarks_) first_landmark_ = c;
      if (!landmarks_) landmarks_ = hooks_of_engine.measure_landmarks(characters, ignored_taxa);
      has_continuous_ = true;
      continue;
    }
    has_continuous_ = has_continuous_ || record.is_continuous;
    characters_.push_back({c, silent_pattern_of(c), 0});
  }
  for (int t = 0; t < matrix.ntax; ++t) {
    if (!ignored_taxa_.empty() && ignored_taxa_[at(t)]) continue;
    for (plain_character& one : characters_) {
      const std::uint32_t states = cell(t, one.character);
      if (!one.silent.matches(states)) one.observed |= states;
    }
  }
  divide_into_slices(most_columns > 0 ? most_columns : columns_in_memory());
}

void plain_optimiser::divide_into_slices(std::size_t most_columns) {
  std::size_t columns = 0;
  for (std::size_t i = 0; i < characters_.size(); ++i) {
    const std::size_t worth = columns_worth(characters_[i]);
    if (columns > 0 && columns + worth > most_columns) {
      slice_ends_.push_back(i);
      columns = 0;
    }
    columns += worth;
  }
  slice_ends_.push_back(characters_.size());
}

void plain_optimiser::load_slice(std::size_t number) {
  if (number == loaded_) return;
  loaded_ = no_slice;
  const std::size_t first = number == 0 ? 0 : slice_ends_[number - 1];
  slice_.load(std::span(characters_).subspan(first, slice_ends_[number] - first), ignored_taxa_);
  loaded_ = number;
}

void plain_optimiser::optimise(const_tree_span tree, polytomy_kind polytomies) {
  optimise_slices(tree, polytomies, nullptr);
}

void plain_optimiser::optimise(const_tree_span tree, const slice_visitor& visit) {
  optimise_slices(tree, polytomy_kind::hard, &visit);
}

void plain_optimiser::optimise_slices(const_tree_span tree, polytomy_kind polytomies,
                                      const slice_visitor* visit) {
  if (landmarks_ && !visit) {
    if (polytomies == polytomy_kind::soft)
      error_end_f(
          "Polytomies for landmark characters (e.g. char. %i) cannot be optimized as \"soft\"",
          first_landmark_);
    landmarks_->optimise(tree);
  }
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  const std::vector<int> order = internal_nodes_root_first(lists, matrix.ntax);
  for (std::size_t i = 0; i < slice_ends_.size(); ++i) {
    check_interrupt();
    load_slice(i);
    slice_.optimise(order, lists, polytomies, visit != nullptr);
    slice_.give_steps(steps_);
    if (visit) (*visit)(slice_);
  }
}

double plain_optimiser::length(int character) const {
  const character_record& record = matrix.characters[at(character)];
  if (record.type == landmark_data) return landmarks_->score(character);
  const auto steps = static_cast<double>(steps_[at(character)]);
  return record.is_continuous ? steps / 1000 : steps;
}

double plain_optimiser::score() const {
  std::int64_t steps = 0;
  std::int64_t thousandths = 0;
  double landmarks = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    if (record.type == landmark_data && landmarks_)
      landmarks += record.weight * landmarks_->score(c);
    (record.is_continuous ? thousandths : steps) += record.weight * steps_[at(c)];
  }
  return static_cast<double>(steps) + static_cast<double>(thousandths) / 1000.0 + landmarks;
}

}  // namespace zeb
