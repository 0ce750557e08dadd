#include "distances/moves/paired_trees.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace zeb {

int paired_trees::linked::sister(int node) const {
  const int above = up[at(node)];
  return left[at(above)] == node ? right[at(above)] : left[at(above)];
}

int paired_trees::linked::take_off(int node) {
  const int above = up[at(node)];
  if (above < 0) return -1;
  const int other = sister(node);
  const int below = up[at(above)];
  up[at(other)] = below;
  if (below >= 0) (left[at(below)] == above ? left : right)[at(below)] = other;
  up[at(node)] = -1;
  return other;
}

paired_trees::paired_trees(const binary_tree& a, const binary_tree& b)
    : a_{a.ancestor, a.first, a.second},
      b_{b.ancestor, b.first, b.second},
      joined_to_(at(a.terminals)) {
  std::iota(joined_to_.begin(), joined_to_.end(), 0);
  for (int node = static_cast<int>(a.ancestor.size()) - 1; node >= a.terminals; --node)
    note_sisters(node);
}

void paired_trees::note_sisters(int node) {
  if (node < 0 || a_.is_terminal(node)) return;
  if (a_.is_terminal(a_.left[at(node)]) && a_.is_terminal(a_.right[at(node)]))
    waiting_.push_back(node);
}

/// A terminal that is a piece by itself leaves the first tree.
void paired_trees::finish_piece(int terminal) {
  const int other = a_.take_off(terminal);
  if (other >= 0) note_sisters(a_.up[at(other)]);
}

void paired_trees::join(int kept, int gone) {
  joined_to_[at(gone)] = kept;
  // The one that is kept stands where the ancestor of both was.
  a_.take_off(gone);
  b_.take_off(gone);
  if (b_.up[at(kept)] < 0)
    finish_piece(kept);
  else
    note_sisters(a_.up[at(kept)]);
}

void paired_trees::cut(int node) {
  if (b_.up[at(node)] < 0) return;
  ++cuts_;
  const int other = b_.take_off(node);
  for (const int n : {node, other})
    if (n >= 0 && b_.is_terminal(n) && b_.up[at(n)] < 0) finish_piece(n);
}

paired_trees::conflict paired_trees::next_conflict() {
  conflict found;
  while (!waiting_.empty()) {
    const int node = waiting_.back();
    const int x = a_.left[at(node)], y = a_.right[at(node)];
    // What was noted may be gone, or have other descendants by now.
    if (!a_.is_terminal(x) || !a_.is_terminal(y) || a_.up[at(x)] != node || a_.up[at(y)] != node) {
      waiting_.pop_back();
      continue;
    }
    if (b_.up[at(x)] >= 0 && b_.up[at(x)] == b_.up[at(y)]) {
      waiting_.pop_back();
      join(x, y);
      continue;
    }
    found.first = x;
    found.second = y;
    break;
  }
  if (found.first < 0) return found;
  std::vector<int> path{found.first};
  while (b_.up[at(path.back())] >= 0) path.push_back(b_.up[at(path.back())]);
  std::vector<int> other{found.second};
  while (b_.up[at(other.back())] >= 0) other.push_back(b_.up[at(other.back())]);
  found.apart = path.back() != other.back();
  if (found.apart) return found;
  while (path.size() > 1 && other.size() > 1 && path[path.size() - 2] == other[other.size() - 2]) {
    path.pop_back();
    other.pop_back();
  }
  // The last ones are the node that both descend from; the ones before it are each other's sisters.
  for (const std::vector<int>* side : {&path, &other})
    for (std::size_t i = 0; i + 2 < side->size(); ++i)
      found.between.push_back(b_.sister((*side)[i]));
  return found;
}

std::vector<std::vector<int>> paired_trees::pieces() const {
  std::map<int, std::vector<int>> by_terminal;
  for (std::size_t t = 0; t < joined_to_.size(); ++t) {
    int stands = static_cast<int>(t);
    while (joined_to_[at(stands)] != stands) stands = joined_to_[at(stands)];
    by_terminal[stands].push_back(static_cast<int>(t));
  }
  std::vector<std::vector<int>> out;
  for (auto& [terminal, piece] : by_terminal) out.push_back(std::move(piece));
  return out;
}

}  // namespace zeb
