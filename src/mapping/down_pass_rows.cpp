#include "mapping/down_pass_rows.h"

#include <bit>
#include <string>
#include <vector>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "engine/plain/plain_optimisation.h"
#include "engine/registration.h"
#include "matrix/character_steps.h"
#include "matrix/hooks.h"
#include "matrix/matrix.h"
#include "matrix/symbols.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

// The characters that are optimised as sets of states; the others are missing in the rows.
std::vector<std::uint8_t> characters_with_sets() {
  std::vector<std::uint8_t> marks(at(matrix.nchar), 0);
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& r = matrix.characters[at(c)];
    marks[at(c)] = !r.is_continuous && r.type != landmark_data;
  }
  return marks;
}

// Cells of a node before the columns are looked at: what a character without columns has
// everywhere.
void fill_constant_cells(const std::vector<std::uint8_t>& with_sets,
                         std::span<std::uint32_t> cells) {
  for (int c = 0; c < matrix.nchar; ++c) {
    cells[at(c)] = matrix.state_mask;
    const character_record& r = matrix.characters[at(c)];
    if (r.is_continuous) cells[at(c)] = missing_continuous;
    if (with_sets[at(c)] && std::has_single_bit(r.observed)) cells[at(c)] = r.observed;
  }
}

// An additive character has one column per threshold: the node's range begins after those that it
// is surely above, and ends after those that it may be above.
void add_columns(const plain_slice& slice, int node, std::span<std::uint32_t> cells) {
  const std::span<const plain_column> columns = slice.columns();
  const std::span<const std::uint32_t> sets = slice.down(node);
  for (std::size_t i = 0; i < columns.size();) {
    const int character = columns[i].character;
    if (columns[i].threshold < 0) {
      cells[at(character)] = sets[i++];
      continue;
    }
    int low = columns[i].threshold;
    int high = low;
    for (; i < columns.size() && columns[i].character == character; ++i) {
      low += sets[i] == 2;
      high += (sets[i] & 2) != 0;
    }
    cells[at(character)] = 0;
    for (int s = low; s <= high; ++s) cells[at(character)] |= 1U << s;
  }
  const cost_optimiser& with_costs = slice.with_costs();
  for (std::size_t i = 0; i < with_costs.size(); ++i)
    cells[at(with_costs.character(i))] = with_costs.down(node)[i];
}

}  // namespace

std::vector<named_row> rows_of_tree(int number) {
  require_trees();
  check_tree_number(number);
  recheck_steps();
  const std::vector<std::uint8_t> with_sets = characters_with_sets();
  for (const std::uint8_t has_sets : with_sets) {
    if (has_sets) continue;
    warning(
        "Continuous and landmark characters have no down-pass sets: they will be missing in nodes");
    break;
  }
  const const_tree_span tree = stored_tree(number);
  const std::vector<int> nodes =
      internal_nodes_root_first(descendants_of(tree, matrix.ntax), matrix.ntax);
  std::vector<named_row> rows;
  for (const int node : nodes) {
    rows.push_back({"node_" + std::to_string(node), alloc_high<std::uint32_t>(at(matrix.nchar))});
    fill_constant_cells(with_sets, rows.back().cells);
  }
  plain_optimiser(with_sets).optimise(tree, [&](const plain_slice& slice) {
    for (std::size_t i = 0; i < nodes.size(); ++i) add_columns(slice, nodes[i], rows[i].cells);
  });
  return rows;
}

}  // namespace zeb
