#include "search/moves/group_tables.h"

#include <algorithm>
#include <bit>

#include "base/indices.h"

namespace zeb {
namespace {

/// Groups that are in two of three directions at least.
set_word in_two(set_word a, set_word b, set_word c) { return (a & b) | ((a | b) & c); }

/// Bundles of branches, counted by group up to three.
struct bundle_count {
  set_word one = 0, two = 0, more = 0;
  void add(set_word groups) {
    more |= two & groups;
    two |= one & groups;
    one |= groups;
  }
};

}  // namespace

group_tables::group_tables(const constraint_rows& rows, int nodes)
    : rows_(rows),
      words_(rows.words),
      terminals_(rows.terminals),
      any_negative_(std::any_of(rows.negative.begin(), rows.negative.end(),
                                [](set_word w) { return w != 0; })),
      anc_(at(nodes)),
      listed_(at(nodes)) {
  for (words* by_node : {&members_below_, &others_below_, &members_beyond_, &others_beyond_})
    by_node->assign(at(nodes) * words_, 0);
  for (words* single : {&all_members_, &all_others_, &torn_, &fragile_}) single->assign(words_, 0);
}

void group_tables::unite_below(int v) {
  const tree_arrays& tree = *tree_;
  const int a = tree.first[at(v)];
  const int b = tree.second[at(v)];
  for (std::size_t w = 0; w < words_; ++w) {
    row(members_below_, v)[w] = members_below(a)[w] | members_below(b)[w];
    row(others_below_, v)[w] = others_below(a)[w] | others_below(b)[w];
  }
}

void group_tables::take_beyond(int v) {
  const tree_arrays& tree = *tree_;
  const int below = tree.anc[at(v)];
  const int sister = tree.sister[at(v)];
  for (std::size_t w = 0; w < words_; ++w) {
    row(members_beyond_, v)[w] = members_beyond(below)[w] | members_below(sister)[w];
    row(others_beyond_, v)[w] = others_beyond(below)[w] | others_below(sister)[w];
  }
}

void group_tables::read(const tree_arrays& tree, int top, bool rooted) {
  tree_ = &tree;
  top_ = top;
  order_.assign(1, top);
  for (std::size_t i = 0; i < order_.size(); ++i) {
    const int v = order_[i];
    if (v < terminals_) continue;
    order_.push_back(tree.first[at(v)]);
    order_.push_back(tree.second[at(v)]);
  }
  for (auto v = order_.rbegin(); v != order_.rend(); ++v) {
    if (*v >= terminals_) {
      unite_below(*v);
    } else {
      std::copy_n(rows_.members_of(*v), words_, row(members_below_, *v));
      std::copy_n(rows_.others_of(*v), words_, row(others_below_, *v));
    }
  }
  for (std::size_t w = 0; w < words_; ++w) {
    const set_word members = rooted ? rows_.members_of(0)[w] : 0;
    const set_word others = rooted ? rows_.others_of(0)[w] : 0;
    row(members_beyond_, top)[w] = members;
    row(others_beyond_, top)[w] = others;
    all_members_[w] = members_below(top)[w] | members;
    all_others_[w] = others_below(top)[w] | others;
  }
  for (std::size_t i = 1; i < order_.size(); ++i) take_beyond(order_[i]);
  if (rooted) std::copy_n(tree.anc.begin(), anc_.size(), anc_.begin());
}

/// All nodes from those that have gained or lost descendants down to the root. Each way down that
/// is walked ends at the root or on one that was walked before, so that the ways, the last one
/// first, put every node after its descendants.
bool group_tables::list_changed() {
  const tree_arrays& tree = *tree_;
  std::vector<std::size_t> ways;
  std::vector<int> walked;
  std::size_t moved = 0;
  for (int v = 0; v < static_cast<int>(anc_.size()); ++v) {
    if (v == terminals_ || anc_[at(v)] == tree.anc[at(v)]) continue;
    ++moved;
    for (int node : {tree.anc[at(v)], anc_[at(v)]}) {
      ways.push_back(walked.size());
      for (; node != terminals_ && !listed_[at(node)]; node = tree.anc[at(node)]) {
        listed_[at(node)] = 1;
        walked.push_back(node);
      }
    }
  }
  for (const int node : walked) listed_[at(node)] = 0;
  changed_.clear();
  std::size_t end = walked.size();
  for (auto way = ways.rbegin(); way != ways.rend(); ++way) {
    changed_.insert(changed_.end(), walked.begin() + static_cast<std::ptrdiff_t>(*way),
                    walked.begin() + static_cast<std::ptrdiff_t>(end));
    end = *way;
  }
  return moved < anc_.size() / 4;
}

void group_tables::update() {
  const tree_arrays& tree = *tree_;
  if (!list_changed()) return read_tree(*tree_);
  top_ = tree.sister[0];
  for (const int v : changed_) unite_below(v);
  std::copy_n(rows_.members_of(0), words_, row(members_beyond_, top_));
  std::copy_n(rows_.others_of(0), words_, row(others_beyond_, top_));
  for (auto v = changed_.rbegin(); v != changed_.rend(); ++v) {
    if (*v != top_) take_beyond(*v);
  }
  std::copy_n(tree.anc.begin(), anc_.size(), anc_.begin());
}

/// The branches of a group's members meet at a node with members in two directions at least, those
/// of the others likewise; where they have a node in common, the group is torn. Seen from the
/// branches of the others, members hang on them in bundles: one bundle is a group that is there;
/// two can become one when the one is moved, more can't.
void group_tables::find_torn() {
  const tree_arrays& tree = *tree_;
  for (std::size_t w = 0; w < words_; ++w) {
    torn_[w] = 0;
    bundle_count of_members;
    bundle_count of_others;
    for (const int v : order_) {
      if (v < terminals_) continue;
      const int a = tree.first[at(v)];
      const int b = tree.second[at(v)];
      const set_word m[] = {members_below(a)[w], members_below(b)[w], members_beyond(v)[w]};
      const set_word o[] = {others_below(a)[w], others_below(b)[w], others_beyond(v)[w]};
      const set_word members_here = in_two(m[0], m[1], m[2]);
      const set_word others_here = in_two(o[0], o[1], o[2]);
      torn_[w] |= members_here & others_here;
      for (int way = 0; way < 3 && rows_.negative[w] != 0; ++way) {
        of_members.add(others_here & m[way] & ~o[way]);
        of_others.add(members_here & o[way] & ~m[way]);
      }
    }
    fragile_[w] =
        torn_[w] & ((of_members.two & ~of_members.more) | (of_others.two & ~of_others.more));
  }
}

int group_tables::broken() const {
  int count = 0;
  for (std::size_t w = 0; w < words_; ++w)
    count += std::popcount((torn_[w] & rows_.positive[w]) | (~torn_[w] & rows_.negative[w]));
  return count;
}

set_word group_tables::members_meet(int node, std::size_t w) const {
  const tree_arrays& tree = *tree_;
  return in_two(members_below(tree.first[at(node)])[w], members_below(tree.second[at(node)])[w],
                members_beyond(node)[w]);
}

/// Where a clade and another direction have members or others, groups are decided: `members` and
/// `others` are of the other direction.
set_word group_tables::at_meeting(int a, const set_word* members, const set_word* others,
                                  set_word groups, const wanted& what) const {
  const std::size_t w = what.word;
  return groups & ((what.members & members_below(a)[w] & members[w]) |
                   (what.others & others_below(a)[w] & others[w]));
}

/// For groups of which nothing is in the clade of `v`: what it hangs on.
set_word group_tables::of_stem(int v, set_word groups, const wanted& what) const {
  const tree_arrays& tree = *tree_;
  set_word found = 0;
  while (groups && v != top_ && tree.anc[at(v)] != terminals_) {
    const int sister = tree.sister[at(v)];
    v = tree.anc[at(v)];
    const set_word in_sister = fixed_below(sister, what.word);
    const set_word beyond = fixed_beyond(v, what.word);
    found |=
        at_meeting(sister, members_beyond(v), others_beyond(v), groups & in_sister & beyond, what);
    if (const set_word only_there = groups & in_sister & ~beyond)
      found |= of_clade(sister, only_there, what);
    groups &= ~in_sister;
  }
  return found;
}

/// For groups of which all is in the clade of `v`: what its stem leads to.
set_word group_tables::of_clade(int v, set_word groups, const wanted& what) const {
  const tree_arrays& tree = *tree_;
  set_word found = 0;
  while (groups && v >= terminals_) {
    const int a = tree.first[at(v)];
    const int b = tree.second[at(v)];
    const set_word in_a = fixed_below(a, what.word);
    const set_word in_b = fixed_below(b, what.word);
    found |= at_meeting(a, members_below(b), others_below(b), groups & in_a & in_b, what);
    if (const set_word only_b = groups & in_b & ~in_a) found |= of_clade(b, only_b, what);
    groups &= in_a & ~in_b;
    v = a;
  }
  return found;
}

set_word group_tables::among(int branch, std::size_t w, set_word m, set_word o) const {
  set_word found = (m & members_below(branch)[w] & members_beyond(branch)[w]) |
                   (o & others_below(branch)[w] & others_beyond(branch)[w]);
  if (!rows_.any_floating) return found;
  const wanted what{w, m, o};
  if (const set_word nothing_below = (m | o) & ~fixed_below(branch, w))
    found |= of_stem(branch, nothing_below, what);
  if (const set_word nothing_beyond = (m | o) & ~fixed_beyond(branch, w))
    found |= of_clade(branch, nothing_beyond, what);
  return found;
}

// ---- Growing trees ----

void group_tables::read_growing_tree(const tree_arrays& tree) {
  read_tree(tree);
  if (!any_negative_) return;
  members_to_come_.assign(words_ * taxa_per_word, 0);
  others_to_come_ = members_to_come_;
  for (words* single : {&lacks_members_, &lacks_others_, &lacks_member_, &lacks_other_,
                        &two_members_, &two_others_}) {
    single->assign(words_, 0);
  }
  for (int t = 0; t < terminals_; ++t) {
    for (std::size_t w = 0; w < words_; ++w) {
      for (set_word rest = rows_.members_of(t)[w]; rest; rest &= rest - 1)
        ++members_to_come_[w * taxa_per_word + at(std::countr_zero(rest))];
      for (set_word rest = rows_.others_of(t)[w]; rest; rest &= rest - 1)
        ++others_to_come_[w * taxa_per_word + at(std::countr_zero(rest))];
    }
  }
  for (std::size_t w = 0; w < words_; ++w) {
    lacks_members_[w] = lacks_others_[w] = rows_.negative[w];
    all_members_[w] = all_others_[w] = 0;
  }
  count_placed(0);
  for (const int v : order_) {
    if (v < terminals_) count_placed(v);
  }
  find_torn();
}

void group_tables::count_placed(int terminal) {
  const auto count = [](set_word groups, std::size_t first, std::vector<int>& to_come,
                        set_word& lacks_any, set_word& lacks_one) {
    for (; groups; groups &= groups - 1) {
      const int bit = std::countr_zero(groups);
      const int left = --to_come[first + at(bit)];
      if (left == 1) lacks_one |= set_word{1} << bit;
      if (left == 0) {
        lacks_any &= ~(set_word{1} << bit);
        lacks_one &= ~(set_word{1} << bit);
      }
    }
  };
  for (std::size_t w = 0; w < words_; ++w) {
    const set_word members = rows_.members_of(terminal)[w];
    const set_word others = rows_.others_of(terminal)[w];
    two_members_[w] |= all_members_[w] & members;
    two_others_[w] |= all_others_[w] & others;
    all_members_[w] |= members;
    all_others_[w] |= others;
    count(members & rows_.negative[w], w * taxa_per_word, members_to_come_, lacks_members_[w],
          lacks_member_[w]);
    count(others & rows_.negative[w], w * taxa_per_word, others_to_come_, lacks_others_[w],
          lacks_other_[w]);
  }
}

/// The terminal lies beyond all branches but those on its way to the root.
void group_tables::note_added(int terminal) {
  const tree_arrays& tree = *tree_;
  const int joint = tree.anc[at(terminal)];
  const int target = tree.sister[at(terminal)];
  const set_word* const members = rows_.members_of(terminal);
  const set_word* const others = rows_.others_of(terminal);
  std::copy_n(members_beyond(target), words_, row(members_beyond_, joint));
  std::copy_n(others_beyond(target), words_, row(others_beyond_, joint));
  changed_.clear();
  for (int v = joint; v != terminals_; v = tree.anc[at(v)]) changed_.push_back(v);
  words kept;
  for (const int v : changed_) {
    kept.insert(kept.end(), members_beyond(v), members_beyond(v) + words_);
    kept.insert(kept.end(), others_beyond(v), others_beyond(v) + words_);
  }
  for (std::size_t i = 0; i < members_beyond_.size(); i += words_) {
    for (std::size_t w = 0; w < words_; ++w) {
      members_beyond_[i + w] |= members[w];
      others_beyond_[i + w] |= others[w];
    }
  }
  auto former = kept.begin();
  for (const int v : changed_) {
    std::copy_n(former, words_, row(members_beyond_, v));
    std::copy_n(former + static_cast<std::ptrdiff_t>(words_), words_, row(others_beyond_, v));
    former += static_cast<std::ptrdiff_t>(2 * words_);
  }
  std::copy_n(members, words_, row(members_below_, terminal));
  std::copy_n(others, words_, row(others_below_, terminal));
  for (const int v : changed_) unite_below(v);
  take_beyond(terminal);
  top_ = tree.sister[0];
  order_.push_back(joint);
  order_.push_back(terminal);
  if (any_negative_) {
    count_placed(terminal);
    find_torn();
    return;
  }
  for (std::size_t w = 0; w < words_; ++w) {
    all_members_[w] |= members[w];
    all_others_[w] |= others[w];
  }
}

bool group_tables::allows(int terminal, int branch, closing when) const {
  for (std::size_t w = 0; w < words_; ++w) {
    const set_word member = rows_.members_of(terminal)[w];
    const set_word other = rows_.others_of(terminal)[w];
    set_word closed = 0;
    if (const set_word negative = rows_.negative[w] & ~torn_[w]; negative) {
      const set_word last_member = member & lacks_member_[w];
      const set_word last_other = other & lacks_other_[w];
      closed = (last_member & ~lacks_others_[w]) | (last_other & ~lacks_members_[w]);
      if (when == closing::early) {
        closed |= (last_member | (member & ~lacks_others_[w])) & all_members_[w] & two_others_[w];
        closed |= (last_other | (other & ~lacks_members_[w])) & all_others_[w] & two_members_[w];
      }
      closed &= negative;
    }
    const set_word asked = (rows_.positive[w] | closed) & all_members_[w] & all_others_[w];
    const set_word torn = among(branch, w, other & asked, member & asked);
    if ((torn & rows_.positive[w]) | (closed & ~torn)) return false;
  }
  return true;
}

}  // namespace zeb
