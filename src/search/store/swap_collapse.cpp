#include "search/store/swap_collapse.h"

#include <unordered_set>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "search/moves/lost_branches.h"
#include "search/moves/swapper.h"
#include "search/search_context.h"
#include "trees/tree_slots.h"

namespace zeb {
namespace {

struct swap_marks {
  lost_branches path;
  std::vector<std::uint8_t> stays;  // by node of the tree in work
};

void mark_move(void* receiver, const met_move& move) {
  auto& marks = *static_cast<swap_marks*>(receiver);
  for (const std::int32_t v : marks.path.of(move)) marks.stays[at(v)] = 0;
}

std::vector<std::uint8_t> nodes_left_alone(const search_data& data,
                                           std::span<const std::int32_t> anc,
                                           std::span<const std::uint8_t> ignored_taxa) {
  std::vector<std::uint8_t> alone;
  if (ignored_taxa.empty()) return alone;
  alone.assign(at(data.nodes), 2);
  for (int t = 0; t < data.n; ++t) {
    if (ignored_taxa[at(data.pack_to_taxon[at(t)])]) continue;
    alone[at(t)] = 0;
    for (int v = anc[at(t)]; v != data.n; v = anc[at(v)]) alone[at(v)] = 0;
  }
  return alone;
}

}  // namespace

void collapse_by_swapping(const_tree_span tree, bool use_tbr, std::span<std::uint8_t> marks,
                          std::span<const std::uint8_t> ignored_taxa) {
  check_interrupt();  // a large tree takes seconds, and a consensus has many
  search_data& data = packed_matrix(true);
  std::vector<std::int32_t> anc(at(data.nodes));
  if (!to_internal(data, tree, anc, true)) {
    error_end("Collapsing by swapping needs trees with all active taxa");
  }
  swap_marks found{lost_branches(data), std::vector<std::uint8_t>(at(data.nodes), 1)};
  const std::vector<std::uint8_t> alone = nodes_left_alone(data, anc, ignored_taxa);
  {
    tree_slots nowhere;
    context_scope scope(data, nowhere, rules_in_force(), random_generator());
    const move_enumeration enumeration{mark_move, &found, alone};
    (use_tbr ? tbr_swap : spr_swap)(scope.context(), anc, {.enumeration = &enumeration});
  }
  const group_sums sums(data);
  const std::vector<std::uint64_t> groups = sums.of_internal(anc);
  std::unordered_set<std::uint64_t> lost;
  for (int v = data.n + 1; v < data.nodes; ++v)
    if (!found.stays[at(v)]) lost.insert(groups[at(v)]);
  const std::vector<std::uint64_t> stored = sums.of_stored(tree);
  const int ntax = data.all_taxa;
  for (std::size_t v = 0; v < marks.size(); ++v) {
    const bool is_internal = static_cast<int>(v) > ntax && static_cast<int>(v) < tree[at(ntax)];
    marks[v] = !is_internal || !lost.contains(stored[v]);
  }
}

}  // namespace zeb
