#include "search/sectors/sector_script.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/arena.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/random_scope.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"
#include "engine/passes/passes.h"
#include "engine/settings_scope.h"
#include "language/command_strings.h"
#include "search/part_search.h"
#include "search/searching_commands.h"
#include "search/sectors/sector_cells.h"
#include "search/workers/worker_process.h"
#include "trees/part_trees.h"

namespace zeb {

namespace {

/// The numbers that the nodes of a tree get in the buffer; -1 for numbers that aren't in use.
std::vector<int> buffer_numbers(const search_data& data, std::span<const std::int32_t> tree) {
  std::vector<std::int32_t> stored(at(2 * data.all_taxa - 1));
  conversion_room room(data);
  to_buffer(data, tree, stored, room);
  std::vector<int> numbers(at(data.nodes));
  for (int v = 0; v < data.nodes; ++v)
    numbers[at(v)] =
        v < data.n ? data.pack_to_taxon[at(v)] : room.numbers[at(data.all_taxa + v - data.n)];
  return numbers;
}

/// The tree in work of `outer`, and the sector as it stands there.
tracked_nodes track_nodes(const search_data& outer, const search_data& inner,
                          const tree_sector& sector, std::span<const std::int32_t> present) {
  const std::vector<int> big = buffer_numbers(outer, outer.tree.anc);
  const std::vector<int> small = buffer_numbers(inner, present);
  tracked_nodes tracked;
  tracked.taxa = outer.all_taxa;
  tracked.in_sector.assign(at(1 + *std::max_element(big.begin(), big.end())), -1);
  const std::vector<std::int32_t> outer_node =
      outer_nodes_of_sector(outer.tree.anc, sector, present);
  for (int v = 1; v < inner.nodes; ++v)
    if (outer_node[at(v)] >= 0) tracked.in_sector[at(big[at(outer_node[at(v)])])] = small[at(v)];
  return tracked;
}

int slots_for_commands(const search_data& data) {
  const std::size_t bytes_of_tree = at(data.nodes) * sizeof(tree_node) + 64;
  const std::size_t most = arena_free() / 8 / bytes_of_tree;
  return static_cast<int>(std::clamp<std::size_t>(most, 2, at(std::max(2, store.maxtrees))));
}

script_result best_of_buffer(search_data& data) {
  script_result best;
  std::vector<std::int32_t> tree(at(data.nodes));
  for (int t = 0; t < store.ntrees; ++t) {
    if (!to_internal(data, stored_tree(t), tree, true)) continue;
    const double score = tree_length(data, tree);
    if (best.tree.empty() || score < best.score) best = {tree, score};
  }
  return best;
}

}  // namespace

script_result run_sector_script(search_context& outer, search_context& inner,
                                const tree_sector& sector, const std::string& commands,
                                bool track) {
  const std::vector<std::int32_t> present =
      tree_of_sector(outer.data.tree.anc, outer.data.n, sector);
  tracked_nodes tracked;
  if (track) tracked = track_nodes(outer.data, inner.data, sector, present);
  const arena_scope memory;
  const std::vector<part_taxon> rows = rows_of_sector(outer.data, sector);
  const part_matrix_scope matrix_of_sector(rows);
  const part_trees_scope trees(slots_for_commands(inner.data));
  const engine_settings_scope settings_of_engine;
  const random_scope seed(std::max(1, outer.random.draw()));
  const part_data_scope data(inner.data);
  const part_search_scope part(inner, track ? &tracked : nullptr);
  to_buffer(inner.data, present, stored_tree(0));
  set_tree_count(store, 1);
  run_search_string(commands, [](const command_row& row) {
    if (!only_searches(row)) leave_part_to_process();  // it may leave something for the next one
    return true;
  });
  return best_of_buffer(inner.data);
}

}  // namespace zeb
