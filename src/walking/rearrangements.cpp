#include "walking/rearrangements.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"

namespace zeb {
namespace {

// Of a normalised tree. Two trees of a neighbourhood of millions have the same one about once in
// a million neighbourhoods.
std::uint64_t hash_of(const_tree_span tree, int ntax) {
  std::uint64_t hash = 0x9e3779b97f4a7c15U;
  for (const tree_node node : tree.first(at(node_limit(tree, ntax)))) {
    hash = (hash ^ static_cast<std::uint32_t>(node)) * 0xff51afd7ed558ccdU;
    hash ^= hash >> 32;
  }
  return hash ? hash : 1;
}

}  // namespace

rearrangements::rearrangements(const_tree_span tree, int ntax, int outgroup, move_kind kind,
                               bool moves_outgroup)
    : ntax_(ntax),
      outgroup_(outgroup),
      kind_(kind),
      moves_outgroup_(moves_outgroup),
      limit_(node_limit(tree, ntax)),
      up_(at(limit_), -1),
      degree_(at(limit_), 0),
      visited_(1024, 0) {
  for (int v = 0; v < limit_; ++v) {
    if (v == ntax || (v < ntax && is_absent(tree, v))) continue;
    up_[at(v)] = tree[at(v)];
    ++degree_[at(tree[at(v)])];
  }
  // As the moves are written, so that it is known again.
  std::vector<tree_node> same(tree.begin(), tree.end());
  ancestors_ = up_;
  record_from_ancestors(ancestors_, same, ntax);
  note(same);
}

bool rearrangements::next(tree_span tree) {
  while (advance()) {
    write_current(tree);
    if (note(tree)) return true;
  }
  return false;
}

double rearrangements::percent() const {
  const double within =
      targets_.empty() ? 0 : static_cast<double>(target_) / static_cast<double>(targets_.size());
  return clip_ >= limit_ ? 100 : 100 * (clip_ < 0 ? 0 : clip_ + within) / limit_;
}

// To the next rooting, target or clip.
bool rearrangements::advance() {
  if (clip_ >= 0 && clip_ < limit_) {
    if (++rooting_ < rootings_.size()) return true;
    rooting_ = 0;
    if (++target_ < targets_.size()) return true;
  }
  while (++clip_ < limit_) {
    if (begin_clip()) return true;
  }
  return false;
}

bool rearrangements::can_be_clipped(int node) const {
  if (up_[at(node)] < 0) return false;
  if (moves_outgroup_) return true;
  return node != outgroup_ && (up_[at(node)] != ntax_ || degree_[at(ntax_)] > 2);
}

bool rearrangements::begin_clip() {
  if (!can_be_clipped(clip_)) return false;
  std::vector<std::uint8_t> in_clade(at(limit_), 0);
  for (int v = 0; v < limit_; ++v) {
    int a = v;
    while (a >= 0 && a != clip_) a = up_[at(a)];
    in_clade[at(v)] = a == clip_;
  }
  target_ = rooting_ = 0;
  list_targets(in_clade);
  list_rootings(in_clade);
  return !targets_.empty();
}

void rearrangements::list_targets(const std::vector<std::uint8_t>& in_clade) {
  targets_.clear();
  const int above = up_[at(clip_)];
  for (int i = 1; i < limit_; ++i) {
    const int v = (clip_ + i) % limit_;
    if (up_[at(v)] < 0 || in_clade[at(v)]) continue;
    if (v == outgroup_ && !moves_outgroup_) continue;
    // With two descendants a node goes when one of them does: its branch and the sister's are one.
    if (v == above && degree_[at(above)] == 2) continue;
    const bool home = up_[at(v)] == above && degree_[at(above)] == 2;
    if (home && kind_ == move_kind::spr) continue;
    targets_.push_back(v);
  }
}

void rearrangements::list_rootings(const std::vector<std::uint8_t>& in_clade) {
  rootings_ = {-1};
  if (kind_ == move_kind::spr || clip_ < ntax_) return;
  for (int v = 0; v < limit_; ++v) {
    if (!in_clade[at(v)] || v == clip_) continue;
    if (up_[at(v)] != clip_ || degree_[at(clip_)] > 2) rootings_.push_back(v);
  }
}

void rearrangements::write_current(tree_span tree) {
  ancestors_ = up_;
  ancestors_.resize(up_.size() + 2, -1);
  int moved = clip_;
  if (rooting() >= 0) {
    // A new node on the branch, from which the way to the old root of the clade leads upward.
    const int root = limit_ + 1;
    int before = root;
    for (int v = up_[at(rooting())];; v = up_[at(v)]) {
      ancestors_[at(v)] = before;
      before = v;
      if (v == clip_) break;
    }
    ancestors_[at(rooting())] = root;
    moved = root;
  }
  const int joint = limit_;
  // The target may be the branch that the clade hung on, in place of which it hangs on the joint.
  ancestors_[at(joint)] = up_[at(target())];
  ancestors_[at(target())] = joint;
  ancestors_[at(moved)] = joint;
  record_from_ancestors(ancestors_, tree, ntax_);
}

// False where the tree has been visited.
bool rearrangements::note(const_tree_span tree) {
  if (visited_count_ * 2 >= visited_.size()) {
    std::vector<std::uint64_t> former =
        std::exchange(visited_, std::vector<std::uint64_t>(2 * visited_.size(), 0));
    for (const std::uint64_t hash : former) {
      if (!hash) continue;
      std::size_t place = hash % visited_.size();
      while (visited_[place]) place = (place + 1) % visited_.size();
      visited_[place] = hash;
    }
  }
  const std::uint64_t hash = hash_of(tree, ntax_);
  std::size_t place = hash % visited_.size();
  for (; visited_[place]; place = (place + 1) % visited_.size())
    if (visited_[place] == hash) return false;
  visited_[place] = hash;
  ++visited_count_;
  return true;
}

}  // namespace zeb
