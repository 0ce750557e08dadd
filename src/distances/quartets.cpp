#include "distances/quartets.h"

#include <span>
#include <vector>

#include "base/indices.h"
#include "distances/shared_parts.h"
#include "distances/shared_terminals.h"

namespace zeb {
namespace {

using number = shared_parts::number;
constexpr auto pairs_of = shared_parts::pairs_of;

/// Sets of `k` of the terminals, each in another part.
number sets_of_parts(std::span<const number> parts, std::size_t k) {
  std::vector<number> sets(k + 1, 0);
  sets[0] = 1;
  for (const number part : parts)
    for (std::size_t taken = k; taken > 0; --taken) sets[taken] += sets[taken - 1] * part;
  return sets[k];
}

/// Sizes of the clades around a node, and with `whole` what is below it.
std::vector<number> parts_around(const cut_tree& tree, int node, bool whole) {
  std::vector<number> parts;
  for (const int child : tree.children(node))
    parts.push_back(static_cast<number>(tree.sizes[at(child)]));
  if (whole && node != tree.root())
    parts.push_back(static_cast<number>(tree.terminals - tree.sizes[at(node)]));
  return parts;
}

number unresolved(const cut_tree& tree, std::size_t k) {
  number count = 0;
  for (const int node : tree.outward) count += sets_of_parts(parts_around(tree, node, k == 4), k);
  return count;
}

/// The descendants of the internal nodes, one node after the other.
struct child_columns {
  explicit child_columns(const cut_tree& tree) {
    for (const int node : tree.outward) {
      begin.push_back(children.size());
      for (const int child : tree.children(node)) children.push_back(child);
    }
    begin.push_back(children.size());
  }
  std::vector<std::size_t> begin;
  std::vector<int> children;
};

struct counted_sets {
  number alike = 0;
  number apart = 0;
};

/// The parts of a pair of nodes; `whole`: with what lies outside of each, as the last ones.
void fill_parts(shared_parts& parts, const shared_terminal_rows& shared, const cut_tree& a, int v,
                const cut_tree& b, int w, std::span<const int> columns, bool whole) {
  const bool outside_v = whole && v != a.root();
  const bool outside_w = whole && w != b.root();
  const auto rows = at(a.lists.count[at(v)]);
  parts.start(rows + outside_v, columns.size() + outside_w);
  std::size_t i = 0;
  for (const int child : a.children(v)) {
    const std::int32_t* row = shared.row(child);
    number inside = 0;
    for (std::size_t j = 0; j < columns.size(); ++j) {
      parts.cell(i, j) = static_cast<number>(row[columns[j]]);
      inside += parts.cell(i, j);
      if (outside_v) parts.cell(rows, j) -= parts.cell(i, j);
    }
    if (outside_w) {
      parts.cell(i, columns.size()) = static_cast<number>(a.sizes[at(child)]) - inside;
      if (outside_v) parts.cell(rows, columns.size()) -= parts.cell(i, columns.size());
    }
    ++i;
  }
  if (!outside_v) return;
  for (std::size_t j = 0; j < columns.size(); ++j)
    parts.cell(rows, j) += static_cast<number>(b.sizes[at(columns[j])]);
  if (outside_w)
    parts.cell(rows, columns.size()) += static_cast<number>(b.terminals - b.sizes[at(w)]);
}

/// What two nodes with two descendants each have alike.
class fork_pair {
 public:
  fork_pair(const shared_terminal_rows& shared, const cut_tree& a, int v) : a_(a), v_(v) {
    first_ = a.lists.first[at(v)];
    second_ = a.lists.sibling[at(first_)];
    first_row_ = shared.row(first_);
    second_row_ = shared.row(second_);
  }

  number triplets(const int* columns) const {
    const number m00 = cell(first_row_, columns[0]), m01 = cell(first_row_, columns[1]);
    const number m10 = cell(second_row_, columns[0]), m11 = cell(second_row_, columns[1]);
    return pairs_of(m00) * m11 + pairs_of(m11) * m00 + pairs_of(m01) * m10 + pairs_of(m10) * m01;
  }

  /// What is outside of each of the nodes is a third part. Where two terminals lie in one cell, the
  /// others lie in two of the four cells that share no line with it. A root with two descendants is
  /// a point of a branch, where nothing is resolved.
  number quartets(const cut_tree& b, int w, const int* columns) const {
    if (v_ == a_.root() || w == b.root()) return 0;
    const number m00 = cell(first_row_, columns[0]), m01 = cell(first_row_, columns[1]);
    const number m10 = cell(second_row_, columns[0]), m11 = cell(second_row_, columns[1]);
    const number m02 = size(a_, first_) - m00 - m01, m12 = size(a_, second_) - m10 - m11;
    const number m20 = size(b, columns[0]) - m00 - m10, m21 = size(b, columns[1]) - m01 - m11;
    const number m22 = static_cast<number>(b.terminals) - size(b, w) - m02 - m12;
    return pairs_of(m00) * (m11 * m22 + m12 * m21) + pairs_of(m01) * (m10 * m22 + m12 * m20) +
           pairs_of(m02) * (m10 * m21 + m11 * m20) + pairs_of(m10) * (m01 * m22 + m02 * m21) +
           pairs_of(m11) * (m00 * m22 + m02 * m20) + pairs_of(m12) * (m00 * m21 + m01 * m20) +
           pairs_of(m20) * (m01 * m12 + m02 * m11) + pairs_of(m21) * (m00 * m12 + m02 * m10) +
           pairs_of(m22) * (m00 * m11 + m01 * m10);
  }

 private:
  static number cell(const std::int32_t* row, int column) {
    return static_cast<number>(row[column]);
  }
  static number size(const cut_tree& tree, int node) {
    return static_cast<number>(tree.sizes[at(node)]);
  }

  const cut_tree& a_;
  int v_, first_, second_;
  const std::int32_t *first_row_, *second_row_;
};

counted_sets count_sets(const cut_tree& a, const cut_tree& b, std::size_t k) {
  counted_sets out;
  const bool whole = k == 4;
  shared_terminal_rows shared(a, b);
  const child_columns columns(b);
  shared_parts parts;
  shared.for_each_node([&](int v) {
    const fork_pair forks(shared, a, v);
    const bool is_fork = a.lists.count[at(v)] == 2;
    for (std::size_t i = 0; i < b.outward.size(); ++i) {
      const int w = b.outward[i];
      const std::span<const int> children(columns.children.data() + columns.begin[i],
                                          columns.begin[i + 1] - columns.begin[i]);
      if (is_fork && children.size() == 2) {
        out.alike +=
            whole ? forks.quartets(b, w, children.data()) : forks.triplets(children.data());
        continue;
      }
      fill_parts(parts, shared, a, v, b, w, children, whole);
      parts.add_up();
      out.alike += whole ? parts.quartets_alike() : parts.triplets_alike();
      if (parts.rows() < k || parts.columns() < k) continue;
      out.apart += whole ? parts.quartets_apart() : parts.triplets_apart();
    }
  });
  if (whole) out.alike /= 2;  // each quartet was met from both of its ends
  return out;
}

resolution_counts compare(const cut_tree& a, const cut_tree& b, std::size_t k) {
  const std::vector<number> single(at(a.terminals), 1);
  const counted_sets counted = count_sets(a, b, k);
  resolution_counts out;
  out.all = static_cast<std::int64_t>(sets_of_parts(single, k));
  out.alike = static_cast<std::int64_t>(counted.alike);
  out.neither = static_cast<std::int64_t>(counted.apart);
  out.second = static_cast<std::int64_t>(unresolved(a, k)) - out.neither;
  out.first = static_cast<std::int64_t>(unresolved(b, k)) - out.neither;
  out.different = out.all - out.alike - out.first - out.second - out.neither;
  return out;
}

}  // namespace

resolution_counts compare_triplets(const cut_tree& a, const cut_tree& b) {
  return compare(a, b, 3);
}

resolution_counts compare_quartets(const cut_tree& a, const cut_tree& b) {
  return compare(a, b, 4);
}

}  // namespace zeb
