#include "search/moves/group_tables.h"

#include <algorithm>
#include <bit>

#include "base/indices.h"

namespace zeb {

group_tables::group_tables(const constraint_rows& rows, int nodes)
    : rows_(rows),
      words_(rows.words),
      terminals_(rows.terminals),
      any_negative_(std::any_of(rows.negative.begin(), rows.negative.end(),
                                [](set_word w) { return w != 0; })) {
  for (words* by_node : {&members_below_, &others_below_, &members_beyond_, &others_beyond_,
                         &among_members_, &among_others_, &node_members_, &node_others_}) {
    by_node->assign(at(nodes) * words_, 0);
  }
  for (words* single : {&all_members_, &all_others_, &torn_, &fragile_, &waiting_more_}) {
    single->assign(words_, 0);
  }
}

void group_tables::read(const tree_arrays& tree, int top, bool rooted) {
  list_nodes(tree, top);
  count_below(tree);
  count_beyond(tree, top, rooted);
  find_joints(tree);
  place_branches(tree, top);
}

void group_tables::read_growing_tree(const tree_arrays& tree) {
  read_tree(tree);
  if (any_negative_) note_waiting();
}

void group_tables::list_nodes(const tree_arrays& tree, int top) {
  order_.assign(1, top);
  for (std::size_t i = 0; i < order_.size(); ++i) {
    const int v = order_[i];
    if (v < terminals_) continue;
    order_.push_back(tree.first[at(v)]);
    order_.push_back(tree.second[at(v)]);
  }
}

void group_tables::count_below(const tree_arrays& tree) {
  for (auto v = order_.rbegin(); v != order_.rend(); ++v) {
    set_word* const members = row(members_below_, *v);
    set_word* const others = row(others_below_, *v);
    if (*v < terminals_) {
      std::copy_n(rows_.members_of(*v), words_, members);
      std::copy_n(rows_.others_of(*v), words_, others);
      continue;
    }
    const int a = tree.first[at(*v)];
    const int b = tree.second[at(*v)];
    for (std::size_t w = 0; w < words_; ++w) {
      members[w] = members_below(a)[w] | members_below(b)[w];
      others[w] = others_below(a)[w] | others_below(b)[w];
    }
  }
}

void group_tables::count_beyond(const tree_arrays& tree, int top, bool rooted) {
  for (std::size_t w = 0; w < words_; ++w) {
    const set_word members = rooted ? rows_.members_of(0)[w] : 0;
    const set_word others = rooted ? rows_.others_of(0)[w] : 0;
    row(members_beyond_, top)[w] = members;
    row(others_beyond_, top)[w] = others;
    all_members_[w] = members_below(top)[w] | members;
    all_others_[w] = others_below(top)[w] | others;
  }
  for (const int v : order_) {
    if (v < terminals_) continue;
    for (const int child : {tree.first[at(v)], tree.second[at(v)]}) {
      const int sister = tree.sister[at(child)];
      for (std::size_t w = 0; w < words_; ++w) {
        row(members_beyond_, child)[w] = members_beyond(v)[w] | members_below(sister)[w];
        row(others_beyond_, child)[w] = others_beyond(v)[w] | others_below(sister)[w];
      }
    }
  }
}

/// The branches of a group's members meet at a node with members in two directions at least, those
/// of the others likewise; where they have a node in common, the group is torn. Seen from the
/// branches of the others, members hang on them in bundles: one bundle is a group that is there;
/// two can become one when the one is moved, more can't.
void group_tables::find_joints(const tree_arrays& tree) {
  std::fill(torn_.begin(), torn_.end(), 0);
  std::fill(fragile_.begin(), fragile_.end(), 0);
  struct bundles {
    set_word one = 0, two = 0, more = 0;
    void add(set_word groups) {
      more |= two & groups;
      two |= one & groups;
      one |= groups;
    }
  };
  for (std::size_t w = 0; w < words_; ++w) {
    const bool wants_fragile = rows_.negative[w] != 0;
    bundles of_members;
    bundles of_others;
    for (const int v : order_) {
      if (v < terminals_) continue;
      const int a = tree.first[at(v)];
      const int b = tree.second[at(v)];
      const set_word m[] = {members_below(a)[w], members_below(b)[w], members_beyond(v)[w]};
      const set_word o[] = {others_below(a)[w], others_below(b)[w], others_beyond(v)[w]};
      const set_word members_meet = (m[0] & m[1]) | ((m[0] | m[1]) & m[2]);
      const set_word others_meet = (o[0] & o[1]) | ((o[0] | o[1]) & o[2]);
      row(node_members_, v)[w] = members_meet;
      row(node_others_, v)[w] = others_meet;
      torn_[w] |= members_meet & others_meet;
      if (!wants_fragile) continue;
      for (int way = 0; way < 3; ++way) {
        of_members.add(others_meet & m[way] & ~o[way]);
        of_others.add(members_meet & o[way] & ~m[way]);
      }
    }
    fragile_[w] =
        torn_[w] & ((of_members.two & ~of_members.more) | (of_others.two & ~of_others.more));
  }
}

void group_tables::place_branches(const tree_arrays& tree, int top) {
  if (!rows_.any_floating) {
    for (const int v : order_) {
      for (std::size_t w = 0; w < words_; ++w) {
        row(among_members_, v)[w] = members_below(v)[w] & members_beyond(v)[w];
        row(among_others_, v)[w] = others_below(v)[w] & others_beyond(v)[w];
      }
    }
    return;
  }
  // A node with members or others in one direction only is where that direction leads.
  const auto fixed_below = [&](int v, std::size_t w) {
    return members_below(v)[w] | others_below(v)[w];
  };
  const auto fixed_beyond = [&](int v, std::size_t w) {
    return members_beyond(v)[w] | others_beyond(v)[w];
  };
  for (auto i = order_.rbegin(); i != order_.rend(); ++i) {
    const int v = *i;
    set_word* const members = row(node_members_, v);
    set_word* const others = row(node_others_, v);
    if (v < terminals_) {
      std::fill_n(members, words_, 0);
      std::fill_n(others, words_, 0);
      continue;
    }
    for (const int child : {tree.first[at(v)], tree.second[at(v)]}) {
      for (std::size_t w = 0; w < words_; ++w) {
        const set_word only_here = ~fixed_beyond(child, w);
        members[w] |= only_here & row(node_members_, child)[w];
        others[w] |= only_here & row(node_others_, child)[w];
      }
    }
  }
  for (const int v : order_) {
    const int below = tree.anc[at(v)];
    for (std::size_t w = 0; w < words_; ++w) {
      const set_word none_beyond = ~fixed_beyond(v, w);
      set_word among_members =
          (members_below(v)[w] & members_beyond(v)[w]) | (none_beyond & row(node_members_, v)[w]);
      set_word among_others =
          (others_below(v)[w] & others_beyond(v)[w]) | (none_beyond & row(node_others_, v)[w]);
      if (v != top) {
        const set_word none_here = ~fixed_below(v, w);
        row(node_members_, v)[w] |= none_here & row(node_members_, below)[w];
        row(node_others_, v)[w] |= none_here & row(node_others_, below)[w];
        among_members |= none_here & row(node_members_, below)[w];
        among_others |= none_here & row(node_others_, below)[w];
      }
      row(among_members_, v)[w] = among_members;
      row(among_others_, v)[w] = among_others;
    }
  }
}

void group_tables::note_waiting() {
  std::vector<std::uint8_t> placed(at(terminals_), 0);
  placed[0] = 1;
  for (const int v : order_) {
    if (v < terminals_) placed[at(v)] = 1;
  }
  words waiting(words_, 0);
  std::fill(waiting_more_.begin(), waiting_more_.end(), 0);
  for (int t = 0; t < terminals_; ++t) {
    if (placed[at(t)]) continue;
    for (std::size_t w = 0; w < words_; ++w) {
      const set_word fixed = rows_.members_of(t)[w] | rows_.others_of(t)[w];
      waiting_more_[w] |= waiting[w] & fixed;
      waiting[w] |= fixed;
    }
  }
}

int group_tables::broken() const {
  int count = 0;
  for (std::size_t w = 0; w < words_; ++w) {
    count += std::popcount((torn_[w] & rows_.positive[w]) | (~torn_[w] & rows_.negative[w]));
  }
  return count;
}

bool group_tables::allows(int terminal, int branch) const {
  const set_word* const members = rows_.members_of(terminal);
  const set_word* const others = rows_.others_of(terminal);
  for (std::size_t w = 0; w < words_; ++w) {
    const set_word both = all_members_[w] & all_others_[w];
    const set_word torn =
        torn_[w] |
        (both & ((members[w] & among_others(branch)[w]) | (others[w] & among_members(branch)[w])));
    const set_word closing = (members[w] | others[w]) & ~waiting_more_[w];
    if ((torn & rows_.positive[w]) | (~torn & closing & rows_.negative[w])) return false;
  }
  return true;
}

}  // namespace zeb
