#include "search/moves/search_constraints.h"

#include <algorithm>

#include "base/indices.h"

namespace zeb {

std::unique_ptr<search_constraints> search_constraints::in_force(const search_data& data) {
  if (!constraints.active) return nullptr;
  check_consistency(data.pack_to_taxon.first(at(data.n)));
  return std::unique_ptr<search_constraints>(new search_constraints(data));
}

search_constraints::search_constraints(const search_data& data)
    : rows_(rows_of_constraints(data.pack_to_taxon.first(at(data.n)))),
      whole_(rows_, data.nodes),
      other_(rows_, data.nodes),
      wrong_among_members_(rows_.words),
      wrong_among_others_(rows_.words),
      clip_half_(rows_, data.nodes),
      main_half_(rows_, data.nodes) {}

bool search_constraints::obeyed(const search_data& data) {
  other_.read_tree(data.tree);
  return other_.broken() == 0;
}

void search_constraints::protect(const search_data& data, std::span<std::uint8_t> marks) {
  group_tables& tree = other_;
  tree.read_tree(data.tree);
  for (std::size_t w = 0; w < rows_.words; ++w) {
    const auto parts = [&](int v) {
      const set_word members_below = tree.members_below(v)[w];
      const set_word others_below = tree.others_below(v)[w];
      const set_word members_beyond = tree.members_beyond(v)[w];
      const set_word others_beyond = tree.others_beyond(v)[w];
      return (members_below & ~others_below & others_beyond & ~members_beyond) |
             (others_below & ~members_below & members_beyond & ~others_beyond);
    };
    set_word unseen = rows_.positive[w];
    for (int v = data.n + 1; v < data.nodes && unseen; ++v) {
      if (marks[at(v)]) unseen &= ~parts(v);
    }
    for (int v = data.n + 1; v < data.nodes && unseen; ++v) {
      if (marks[at(v)]) continue;
      const int below = data.tree.anc[at(v)];
      const set_word next_to_members =
          tree.node_among_members(v)[w] ^ tree.node_among_members(below)[w];
      if (parts(v) & next_to_members & unseen) marks[at(v)] = 1;
    }
  }
}

void search_constraints::tree_changed(const search_data& data) {
  whole_.read_tree(data.tree);
  astray_ = whole_.broken() > 0;
  may_come_up_ = false;
  for (std::size_t w = 0; w < rows_.words; ++w) {
    may_come_up_ |= (whole_.fragile()[w] & rows_.negative[w]) != 0;
  }
  const std::size_t words = rows_.words;
  cluster_members_.assign(at(data.cluster_count) * words, ~set_word{0});
  cluster_others_ = cluster_members_;
  for (const int v : whole_.nodes_read()) {
    const std::size_t cluster = at(data.cluster_of[at(v)]) * words;
    for (std::size_t w = 0; w < words; ++w) {
      cluster_members_[cluster + w] &= whole_.among_members(v)[w];
      cluster_others_[cluster + w] &= whole_.among_others(v)[w];
    }
  }
}

bool search_constraints::begin_clip(const search_data& data, int clip) {
  clip_ = clip;
  halves_known_ = false;
  closes_any_ = false;
  if (astray_) return true;
  for (std::size_t w = 0; w < rows_.words; ++w) {
    const set_word members = whole_.members_below(clip)[w];
    const set_word others = whole_.others_below(clip)[w];
    const set_word main_members = whole_.members_beyond(clip)[w];
    const set_word main_others = whole_.others_beyond(clip)[w];
    // The group is on both sides, and the one side has others (or members) too, the other not.
    wrong_among_others_[w] = members & main_members & (others ^ main_others) & rows_.positive[w];
    wrong_among_members_[w] = others & main_others & (members ^ main_members) & rows_.positive[w];
    closes_any_ |= (wrong_among_others_[w] | wrong_among_members_[w]) != 0;
  }
  return !closes_any_ || is_open_nearby(data);
}

/// The open branches of either side are connected, with the place of the clip among them.
bool search_constraints::is_open_nearby(const search_data& data) const {
  const tree_arrays& tree = data.tree;
  const auto descendant_is_open = [&](int v) {
    return v >= data.n && !(closes(tree.first[at(v)]) && closes(tree.second[at(v)]));
  };
  if (clip_ > data.n &&
      (descendant_is_open(tree.first[at(clip_)]) || descendant_is_open(tree.second[at(clip_)]))) {
    return true;
  }
  const int sister = tree.sister[at(clip_)];
  if (sister != 0 && descendant_is_open(sister)) return true;
  const int joint = tree.anc[at(clip_)];
  if (joint == data.n || tree.anc[at(joint)] == data.n) return false;
  return !closes(tree.anc[at(joint)]) || !closes(tree.sister[at(joint)]);
}

bool search_constraints::closes(int branch) const {
  if (!closes_any_) return false;
  const set_word* const members = whole_.among_members(branch);
  const set_word* const others = whole_.among_others(branch);
  for (std::size_t w = 0; w < rows_.words; ++w) {
    if ((members[w] & wrong_among_members_[w]) | (others[w] & wrong_among_others_[w])) return true;
  }
  return false;
}

bool search_constraints::closes_cluster(int cluster) const {
  if (!closes_any_) return false;
  const std::size_t first = at(cluster) * rows_.words;
  for (std::size_t w = 0; w < rows_.words; ++w) {
    if ((cluster_members_[first + w] & wrong_among_members_[w]) |
        (cluster_others_[first + w] & wrong_among_others_[w])) {
      return true;
    }
  }
  return false;
}

bool search_constraints::forbids(const search_data& data, int root, int target) {
  if (closes(root) || closes(target)) return true;
  if (!astray_ && !may_come_up_) return false;
  if (!halves_known_) read_halves(data);
  return breaks_by_halves(root, target);
}

void search_constraints::read_halves(const search_data& data) {
  clip_half_.read(data.tree, clip_, false);
  if (data.tree.sister[0] == clip_) {
    main_half_.read(data.tree, 0, false);  // the whole ingroup is the clip
  } else {
    main_half_.read_tree(data.tree);
  }
  halves_known_ = true;
}

bool search_constraints::breaks_by_halves(int root, int target) const {
  for (std::size_t w = 0; w < rows_.words; ++w) {
    const set_word members = clip_half_.all_members()[w];
    const set_word others = clip_half_.all_others()[w];
    const set_word main_members = main_half_.all_members()[w];
    const set_word main_others = main_half_.all_others()[w];
    const set_word clip_mixed = members & others;
    const set_word main_mixed = main_members & main_others;
    const set_word torn =
        (clip_mixed &
         (main_mixed | clip_half_.torn()[w] | (main_members & clip_half_.among_others(root)[w]) |
          (main_others & clip_half_.among_members(root)[w]))) |
        (main_mixed & (main_half_.torn()[w] | (members & main_half_.among_others(target)[w]) |
                       (others & main_half_.among_members(target)[w])));
    if ((torn & rows_.positive[w]) | (~torn & rows_.negative[w])) return true;
  }
  return false;
}

}  // namespace zeb
