#include "search/moves/lost_branches.h"

#include <random>

#include "base/indices.h"

namespace zeb {

lost_branches::lost_branches(const search_data& data) : is_ancestor_(at(data.nodes), 0) {}

/// The branches between the two places change sides, and the one by which the clip hung on them
/// goes.
void lost_branches::add_main_path(const met_move& move) {
  const std::span<const std::int32_t> anc = move.data->tree.anc;
  const int root = move.data->n;
  const auto flag_ancestors = [&](std::uint8_t value) {
    for (int v = move.target; v != root; v = anc[at(v)]) is_ancestor_[at(v)] = value;
    is_ancestor_[at(root)] = value;
  };
  flag_ancestors(1);
  const bool downward = is_ancestor_[at(move.sister)] != 0;
  int meeting = move.sister;
  if (downward) {
    lost_.push_back(move.sister);
  } else {
    lost_.push_back(anc[at(move.clip)]);  // the free joint, which the clip still names
    meeting = anc[at(move.sister)];
    for (; !is_ancestor_[at(meeting)]; meeting = anc[at(meeting)]) lost_.push_back(meeting);
  }
  flag_ancestors(0);
  if (meeting == move.target) return;
  for (int v = anc[at(move.target)]; v != meeting; v = anc[at(v)]) lost_.push_back(v);
}

std::span<const std::int32_t> lost_branches::of(const met_move& move) {
  lost_.clear();
  const std::span<const std::int32_t> anc = move.data->tree.anc;
  if (move.target != move.sister) add_main_path(move);
  if (move.root != move.home_root) {
    for (int v = anc[at(move.root)]; v != move.clip; v = anc[at(v)]) lost_.push_back(v);
  }
  return lost_;
}

group_sums::group_sums(const search_data& data, std::span<const std::uint8_t> ignored)
    : data_(data) {
  std::mt19937_64 generator(1);
  for (int t = 0; t < data.n; ++t) {
    const std::uint64_t number = generator();
    const bool counts = ignored.empty() || !ignored[at(data.pack_to_taxon[at(t)])];
    of_terminal_.push_back(counts ? number : 0);
    all_ += of_terminal_.back();
  }
}

std::vector<std::uint64_t> group_sums::of_internal(std::span<const std::int32_t> anc) const {
  std::vector<std::uint64_t> sums(at(data_.nodes), 0);
  for (int t = 1; t < data_.n; ++t) {
    for (int v = t; v != data_.n; v = anc[at(v)]) sums[at(v)] += of_terminal_[at(t)];
  }
  return sums;
}

std::vector<std::uint64_t> group_sums::of_stored(const_tree_span tree) const {
  const int ntax = data_.all_taxa;
  std::vector<std::uint64_t> sums(tree.size(), 0);
  std::vector<std::uint8_t> has_outgroup(tree.size(), 0);
  for (int taxon = 0; taxon < ntax; ++taxon) {
    const int t = data_.taxon_to_pack[at(taxon)];
    if (t >= data_.n) continue;
    for (int v = tree[at(taxon)]; v != 0 && v != ntax; v = tree[at(v)]) {
      sums[at(v)] += of_terminal_[at(t)];
      if (t == 0) has_outgroup[at(v)] = 1;
    }
  }
  for (std::size_t v = 0; v < sums.size(); ++v)
    if (has_outgroup[v]) sums[v] = all_ - sums[v];
  return sums;
}

}  // namespace zeb
