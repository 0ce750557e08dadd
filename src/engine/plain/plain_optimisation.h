// Parsimony on one tree of the buffer, over the matrix itself: real states, polytomies, inactive
// characters on request. The reports, the collapsing rules and the scores of stored trees use it;
// searches don't.
//
// Unordered and additive characters become columns of plain sets: an additive one has a column for
// each threshold between its lowest and highest state, so that all columns obey the same rules.
// Those with costs of changes and continuous ones are kept apart.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/plain/cost_optimisation.h"
#include "engine/plain/range_optimisation.h"
#include "trees/tree_record.h"

namespace zeb {

struct descendant_lists;

/// One character as a tree shows it.
struct plain_column {
  int character;
  int threshold;           // additive: between this state and the next; -1 for other characters
  std::uint32_t observed;  // states that occur; an additive column has states 0 (at or below) and 1
};

/// What a pass over a tree leaves behind, beside the steps. Without sets it works in slices of the
/// characters, in little memory.
enum class kept_sets { none, down, final };

class plain_optimiser {
 public:
  /// Takes the cells of the characters marked (one byte each) from the matrix. `ignored_taxa` (may
  /// be empty) count as missing. Error for landmark characters among the marked ones.
  explicit plain_optimiser(std::span<const std::uint8_t> characters,
                           std::span<const std::uint8_t> ignored_taxa = {});

  /// Down-pass over a tree, and the final pass where its sets are to be kept. The tree may be
  /// polytomous and lack taxa.
  void optimise(const_tree_span tree, polytomy_kind polytomies, kept_sets keep);

  std::span<const plain_column> columns() const { return columns_; }
  /// Steps of a character on the last tree, unweighted; thousandths for continuous characters.
  std::int64_t steps(int character) const { return steps_[static_cast<std::size_t>(character)]; }
  /// Weighted sum over the characters, continuous ones in whole units.
  double score() const;
  bool has_continuous() const { return ranges_.size() > 0; }

  /// Sets of a node on the last tree, by column, where they were kept.
  std::span<const std::uint32_t> down(int node) const { return {down_sets(node), columns_.size()}; }
  std::span<const std::uint32_t> final(int node) const {
    return std::span(final_).subspan(static_cast<std::size_t>(node) * columns_.size(),
                                     columns_.size());
  }
  /// The continuous characters among those taken, which have no columns.
  const range_optimiser& ranges() const { return ranges_; }
  /// Likewise those with costs of changes.
  const cost_optimiser& with_costs() const { return with_costs_; }

 private:
  /// Columns `first` to `first + width - 1`, for whose internal nodes there are sets.
  struct slice {
    std::size_t first = 0;
    std::size_t width = 0;
  };
  /// The sets of a node in the slice at hand.
  const std::uint32_t* down_sets(int node) const;
  std::uint32_t* inner_row(std::vector<std::uint32_t>& sets, int node) const;
  void add_character(int character, std::span<const std::uint8_t> ignored_taxa);
  void fill_cells(std::span<const std::uint8_t> ignored_taxa);
  void down_pass(const descendant_lists& lists, std::span<const int> root_first,
                 polytomy_kind polytomies);
  void final_pass(const descendant_lists& lists, std::span<const int> root_first);
  void down_polytomy(int node, std::span<const int> below, polytomy_kind polytomies);

  std::vector<plain_column> columns_;
  std::vector<std::uint32_t> observed_;  // by column
  std::vector<std::uint32_t> cells_;     // terminal sets by column, a taxon after the other
  range_optimiser ranges_;
  cost_optimiser with_costs_;
  std::vector<std::int64_t> steps_;         // by character
  std::vector<std::int32_t> column_steps_;  // by column
  slice at_hand_;
  std::vector<std::uint32_t> down_;   // by internal node, of the slice at hand
  std::vector<std::uint32_t> reach_;  // the same: states at most one step dearer than those
  std::vector<std::uint32_t> final_;  // by node
};

/// The characters that scores count: active and of non-zero weight.
std::vector<std::uint8_t> scored_characters();

}  // namespace zeb
