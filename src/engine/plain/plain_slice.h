// The characters of a tree of the buffer that are optimised together: as many as there is room for
// sets of all nodes.
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
#include "matrix/matrix.h"

namespace zeb {

struct descendant_lists;

/// One character as a tree shows it.
struct plain_column {
  int character;
  int threshold;           // additive: between this state and the next; -1 for other characters
  std::uint32_t observed;  // states that occur; an additive column has states 0 (at or below) and 1
};

/// A character to be optimised.
struct plain_character {
  int character;
  silent_pattern silent;   // cells that say nothing
  std::uint32_t observed;  // states of the cells that say something; discrete characters only
};

/// Columns that the character has, or the number of columns that need as much memory.
std::size_t columns_worth(const plain_character& one);

/// What the sets of a column take at most, in bytes, for a matrix of so many taxa.
std::size_t bytes_of_column(int ntax);

class plain_slice {
 public:
  /// Takes the cells of these characters from the matrix; `ignored_taxa` (may be empty) count as
  /// missing.
  void load(std::span<const plain_character> characters,
            std::span<const std::uint8_t> ignored_taxa);
  /// Down-pass over a tree given by its descendants and its internal nodes, rootward first; with
  /// `with_finals` (hard polytomies only) the final pass too.
  void optimise(std::span<const int> order, const descendant_lists& lists, polytomy_kind polytomies,
                bool with_finals);
  /// Puts the steps of the last tree into `steps`, by character of the matrix.
  void give_steps(std::span<std::int64_t> steps) const;

  std::span<const plain_column> columns() const { return columns_; }
  /// Sets of a node on the last tree, by column.
  std::span<const std::uint32_t> down(int node) const { return {down_sets(node), columns_.size()}; }
  std::span<const std::uint32_t> final(int node) const {
    return std::span(final_).subspan(static_cast<std::size_t>(node) * columns_.size(),
                                     columns_.size());
  }
  /// The continuous characters of the slice, which have no columns.
  const range_optimiser& ranges() const { return ranges_; }
  /// Likewise those with costs of changes.
  const cost_optimiser& with_costs() const { return with_costs_; }

 private:
  const std::uint32_t* down_sets(int node) const;
  std::uint32_t* inner_row(std::vector<std::uint32_t>& sets, int node) const;
  void add_character(const plain_character& one, std::span<const std::uint8_t> ignored_taxa);
  /// By column: the patterns of cells that say nothing.
  struct silent_columns {
    std::vector<std::uint32_t> mask;
    std::vector<std::uint32_t> silent;
  };
  template <class word>
  void fill_cells(std::span<word* const> rows, const silent_columns& silent,
                  std::span<const std::uint8_t> ignored_taxa);
  void down_pass(const descendant_lists& lists, std::span<const int> order,
                 polytomy_kind polytomies);
  void down_polytomy(int node, std::span<const int> below, polytomy_kind polytomies);
  void final_pass(const descendant_lists& lists, std::span<const int> order);

  std::vector<plain_column> columns_;
  std::vector<std::uint32_t> observed_;  // by column
  std::vector<std::uint32_t> cells_;     // terminal sets by column, a taxon after the other
  range_optimiser ranges_;
  cost_optimiser with_costs_;
  std::vector<std::int32_t> steps_;   // by column
  std::vector<std::uint32_t> down_;   // by internal node
  std::vector<std::uint32_t> reach_;  // the same: states at most one step dearer than those
  std::vector<std::uint32_t> final_;  // by node
};

}  // namespace zeb
