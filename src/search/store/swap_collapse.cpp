#include "search/store/swap_collapse.h"

#include <random>
#include <unordered_map>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "search/moves/swapper.h"
#include "search/search_context.h"
#include "trees/tree_slots.h"

namespace zeb {
namespace {

struct swap_marks {
  std::vector<std::uint8_t> stays;        // by node of the tree in work
  std::vector<std::uint8_t> is_ancestor;  // scratch, by node: of the target, or the target itself
};

/// The branches between the old and the new place change sides, and the one by which the clip hung
/// on them goes: marks them.
void mark_main_path(const met_move& move, swap_marks& marks) {
  const std::span<const std::int32_t> anc = move.data->tree.anc;
  const int root = move.data->n;
  auto flag_ancestors = [&](std::uint8_t value) {
    for (int v = move.target; v != root; v = anc[at(v)]) marks.is_ancestor[at(v)] = value;
    marks.is_ancestor[at(root)] = value;
  };
  flag_ancestors(1);
  const bool downward = marks.is_ancestor[at(move.sister)] != 0;
  int meeting = move.sister;
  if (downward) {
    marks.stays[at(move.sister)] = 0;
  } else {
    marks.stays[at(anc[at(move.clip)])] = 0;  // the free joint, which the clip still names
    meeting = anc[at(move.sister)];
    for (; !marks.is_ancestor[at(meeting)]; meeting = anc[at(meeting)])
      marks.stays[at(meeting)] = 0;
  }
  flag_ancestors(0);
  if (meeting == move.target) return;
  for (int v = anc[at(move.target)]; v != meeting; v = anc[at(v)]) marks.stays[at(v)] = 0;
}

void mark_move(void* receiver, const met_move& move) {
  auto& marks = *static_cast<swap_marks*>(receiver);
  const std::span<const std::int32_t> anc = move.data->tree.anc;
  if (move.target != move.sister) mark_main_path(move, marks);
  if (move.root == move.home_root) return;
  for (int v = anc[at(move.root)]; v != move.clip; v = anc[at(v)]) marks.stays[at(v)] = 0;
}

/// Groups of the active taxa as sums of random numbers, the side without the outgroup.
class group_sums {
 public:
  explicit group_sums(const search_data& data) : data_(data) {
    std::mt19937_64 generator(1);
    for (int t = 0; t < data.n; ++t) {
      of_terminal_.push_back(generator());
      all_ += of_terminal_.back();
    }
  }
  std::uint64_t terminal(int t) const { return of_terminal_[at(t)]; }
  std::uint64_t row(int taxon) const {
    const int t = data_.taxon_to_pack[at(taxon)];
    return t < data_.n ? of_terminal_[at(t)] : 0;
  }
  std::uint64_t without_outgroup(std::uint64_t sum, bool has_outgroup) const {
    return has_outgroup ? all_ - sum : sum;
  }

 private:
  const search_data& data_;
  std::vector<std::uint64_t> of_terminal_;
  std::uint64_t all_ = 0;
};

/// Groups of the tree in work whose branches go.
std::unordered_map<std::uint64_t, bool> lost_groups(const search_data& data, const group_sums& sums,
                                                    std::span<const std::int32_t> anc,
                                                    const swap_marks& marks) {
  std::vector<std::uint64_t> below(at(data.nodes), 0);
  for (int t = 1; t < data.n; ++t) {
    for (int v = anc[at(t)]; v != data.n; v = anc[at(v)]) below[at(v)] += sums.terminal(t);
  }
  std::unordered_map<std::uint64_t, bool> lost;
  for (int v = data.n + 1; v < data.nodes; ++v) {
    if (!marks.stays[at(v)]) lost[below[at(v)]] = true;
  }
  return lost;
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
  swap_marks found{std::vector<std::uint8_t>(at(data.nodes), 1),
                   std::vector<std::uint8_t>(at(data.nodes), 0)};
  const std::vector<std::uint8_t> alone = nodes_left_alone(data, anc, ignored_taxa);
  {
    tree_slots nowhere;
    context_scope scope(data, nowhere, rules_in_force(), random_generator());
    const move_enumeration enumeration{mark_move, &found, alone};
    (use_tbr ? tbr_swap : spr_swap)(scope.context(), anc, {.enumeration = &enumeration});
  }
  const group_sums sums(data);
  const auto lost = lost_groups(data, sums, anc, found);
  const int ntax = data.all_taxa;
  std::vector<std::uint64_t> below(marks.size(), 0);
  std::vector<std::uint8_t> has_outgroup(marks.size(), 0);
  for (int t = 0; t < ntax; ++t) {
    for (int v = tree[at(t)]; v != 0 && v != ntax; v = tree[at(v)]) {
      below[at(v)] += sums.row(t);
      if (data.taxon_to_pack[at(t)] == 0) has_outgroup[at(v)] = 1;
    }
  }
  for (std::size_t v = 0; v < marks.size(); ++v) {
    const bool is_internal = static_cast<int>(v) > ntax && static_cast<int>(v) < tree[at(ntax)];
    marks[v] =
        !is_internal || !lost.contains(sums.without_outgroup(below[v], has_outgroup[v] != 0));
  }
}

}  // namespace zeb
