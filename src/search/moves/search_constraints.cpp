#include "search/moves/search_constraints.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"

namespace zeb {

std::unique_ptr<search_constraints> search_constraints::in_force(const search_data& data) {
  if (!constraints.active) return nullptr;
  check_consistency(data.pack_to_taxon.first(at(data.n)));
  return of_rows(data, rows_of_constraints(data.pack_to_taxon.first(at(data.n))));
}

std::unique_ptr<search_constraints> search_constraints::of_rows(const search_data& data,
                                                                constraint_rows rows) {
  return std::unique_ptr<search_constraints>(new search_constraints(std::move(rows), data.nodes));
}

namespace {

/// Groups that no arrangement of the terminals can change: a terminal stands for members and
/// others, or all members (others) are in one terminal.
std::vector<set_word> settled_groups(const constraint_rows& rows) {
  std::vector<set_word> settled(rows.words, 0);
  for (std::size_t w = 0; w < rows.words; ++w) {
    set_word members = 0;
    set_word others = 0;
    set_word members_twice = 0;
    set_word others_twice = 0;
    for (int t = 0; t < rows.terminals; ++t) {
      const set_word m = rows.members_of(t)[w];
      const set_word o = rows.others_of(t)[w];
      settled[w] |= m & o;
      members_twice |= members & m;
      others_twice |= others & o;
      members |= m;
      others |= o;
    }
    settled[w] |= ~(members_twice & others_twice);
  }
  return settled;
}

}  // namespace

std::unique_ptr<search_constraints> search_constraints::of_sector(const search_data& outer,
                                                                  const tree_sector& sector) {
  other_.read_tree(outer.tree);
  constraint_rows rows = rows_;
  rows.terminals = static_cast<int>(sector.terminals.size()) + 1;
  rows.members.clear();
  rows.others.clear();
  const auto add = [&](const set_word* members, const set_word* others) {
    rows.members.insert(rows.members.end(), members, members + rows.words);
    rows.others.insert(rows.others.end(), others, others + rows.words);
  };
  add(other_.members_beyond(sector.top), other_.others_beyond(sector.top));
  for (const std::int32_t v : sector.terminals)
    add(other_.members_below(v), other_.others_below(v));
  const std::vector<set_word> settled = settled_groups(rows);
  for (std::size_t w = 0; w < rows.words; ++w) {
    for (std::vector<set_word>* kind : {&rows.positive, &rows.negative, &rows.of_tree})
      (*kind)[w] &= ~settled[w];
    for (int t = 0; t < rows.terminals; ++t) {
      rows.members[at(t) * rows.words + w] &= ~settled[w];
      rows.others[at(t) * rows.words + w] &= ~settled[w];
      rows.any_floating |=
          ((rows.members_of(t)[w] | rows.others_of(t)[w]) != (rows.positive[w] | rows.negative[w]));
    }
  }
  const int nodes = 2 * rows.terminals - 1;
  return std::unique_ptr<search_constraints>(new search_constraints(std::move(rows), nodes));
}

search_constraints::search_constraints(constraint_rows rows, int nodes)
    : rows_(std::move(rows)),
      any_negative_(std::any_of(rows_.negative.begin(), rows_.negative.end(),
                                [](set_word w) { return w != 0; })),
      whole_(rows_, nodes),
      other_(rows_, nodes),
      wrong_among_members_(rows_.words),
      wrong_among_others_(rows_.words),
      clip_half_(rows_, nodes),
      main_half_(rows_, nodes) {}

bool search_constraints::obeyed(const search_data& data) {
  other_.read_tree(data.tree);
  other_.find_torn();
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
      const int below = data.tree.anc[at(v)];
      if (marks[at(v)] || below == data.n) continue;
      const set_word next_to_members = tree.members_meet(v, w) ^ tree.members_meet(below, w);
      if (parts(v) & next_to_members & unseen) marks[at(v)] = 1;
    }
  }
}

void search_constraints::begin_swap(const search_data& data) {
  whole_.read_tree(data.tree);
  find_faults();
}

void search_constraints::find_faults() {
  whole_.find_torn();
  astray_ = whole_.broken() > 0;
  may_come_up_ = false;
  for (std::size_t w = 0; w < rows_.words; ++w)
    may_come_up_ |= (whole_.fragile()[w] & rows_.negative[w]) != 0;
}

/// Moves keep what positive groups there are.
void search_constraints::tree_changed() {
  whole_.update();
  if (astray_ || any_negative_) find_faults();
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
  for (std::size_t w = 0; w < rows_.words; ++w) {
    if (whole_.among(branch, w, wrong_among_members_[w], wrong_among_others_[w])) return true;
  }
  return false;
}

int search_constraints::list_open_main(const search_data& data, int sister,
                                       std::span<std::int32_t> list, int most) const {
  const tree_arrays& tree = data.tree;
  int lowest = sister;
  while (tree.anc[at(lowest)] != data.n && !closes(tree.anc[at(lowest)]))
    lowest = tree.anc[at(lowest)];
  int count = 0;
  list[at(count++)] = lowest;
  for (int i = 0; i < count && count <= most; ++i) {
    const int v = list[at(i)];
    if (v < data.n) continue;
    for (const int above : {tree.first[at(v)], tree.second[at(v)]}) {
      if (!closes(above)) list[at(count++)] = above;
    }
  }
  return std::min(count, most + 1);
}

int search_constraints::list_open_subtree(const search_data& data, std::span<std::int32_t> list,
                                          int most) const {
  if (clip_ < data.n) {
    list[0] = clip_;
    return 1;
  }
  const tree_arrays& tree = data.tree;
  const int first = tree.first[at(clip_)];
  int count = 0;
  list[at(count++)] = tree.second[at(clip_)];
  const auto put_descendants = [&](int v) {
    if (v < data.n) return;
    for (const int above : {tree.first[at(v)], tree.second[at(v)]}) {
      if (!closes(above)) list[at(count++)] = above;
    }
  };
  put_descendants(first);
  for (int i = 0; i < count && count <= most; ++i) put_descendants(list[at(i)]);
  return std::min(count, most + 1);
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
  clip_half_.find_torn();
  main_half_.find_torn();
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
        (clip_mixed & (main_mixed | clip_half_.torn()[w] |
                       clip_half_.among(root, w, main_others, main_members))) |
        (main_mixed & (main_half_.torn()[w] | main_half_.among(target, w, others, members)));
    if ((torn & rows_.positive[w]) | (~torn & rows_.negative[w])) return true;
  }
  return false;
}

}  // namespace zeb
