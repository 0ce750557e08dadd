#include "search/store/tree_identity.h"

#include <algorithm>

#include "base/indices.h"

namespace zeb {
namespace {

/// One more than the last node whose branch stays.
int staying_end(std::span<const std::int32_t> tree, int n) {
  int end = 2 * n - 1;
  while (end > n + 1 && is_collapsed(tree[at(end - 1)])) --end;
  return end;
}

std::int32_t staying_ancestor(std::span<const std::int32_t> tree, int v, int n) {
  std::int32_t a = plain_ancestor(tree[at(v)]);
  while (a != n && is_collapsed(tree[at(a)])) a = plain_ancestor(tree[at(a)]);
  return a;
}

}  // namespace

int canonical_form(std::span<std::int32_t> tree, int n, std::span<const std::uint8_t> marks,
                   std::span<std::int32_t> scratch) {
  const int nodes = 2 * n - 1;
  const std::span<std::int32_t> number = scratch.subspan(0, at(nodes));
  const std::span<std::int32_t> fresh = scratch.subspan(at(nodes), at(nodes));
  std::fill(number.begin() + n, number.end(), -1);
  number[at(n)] = n;
  int next_staying = n + 1;
  int next_collapsed = nodes - 1;
  for (int t = 1; t < n; ++t) {
    for (std::int32_t v = plain_ancestor(tree[at(t)]); number[at(v)] < 0;) {
      const std::int32_t ancestor = plain_ancestor(tree[at(v)]);
      const bool stays = marks.empty() || marks[at(v)] != 0 || ancestor == n;
      number[at(v)] = stays ? next_staying++ : next_collapsed--;
      v = ancestor;
    }
  }
  for (int v = 0; v < n; ++v) fresh[at(v)] = number[at(plain_ancestor(tree[at(v)]))];
  for (int v = n + 1; v < nodes; ++v) {
    fresh[at(number[at(v)])] = number[at(plain_ancestor(tree[at(v)]))];
  }
  fresh[at(n)] = nodes;
  for (int v = next_staying; v < nodes; ++v) fresh[at(v)] |= collapsed_bit;
  std::copy(fresh.begin(), fresh.end(), tree.begin());
  return tree_bucket(tree, n);
}

int tree_bucket(std::span<const std::int32_t> tree, int n) {
  const int end = staying_end(tree, n);
  std::uint32_t h = 0;
  for (int v = 0; v < end; ++v) {
    // Rotated by the node's number: trees that differ in one exchange would else often agree.
    if (v == n) continue;
    const auto a = static_cast<std::uint32_t>(staying_ancestor(tree, v, n));
    const auto turn = static_cast<unsigned>(v) % 15;
    h ^= a << turn;
  }
  return static_cast<int>(((h >> 8) ^ h) & 0x7f);
}

std::uint64_t tree_print(std::span<const std::int32_t> tree, int n) {
  constexpr std::uint64_t odd = 0x9e3779b97f4a7c15ULL;
  const int end = staying_end(tree, n);
  std::uint64_t h = odd * static_cast<std::uint64_t>(end);
  for (int v = 1; v < end; ++v) {
    if (v == n) continue;
    h = (h ^ static_cast<std::uint64_t>(staying_ancestor(tree, v, n))) * odd;
    h ^= h >> 32;
  }
  return h;
}

bool same_collapsed_tree(std::span<const std::int32_t> a, std::span<const std::int32_t> b, int n,
                         bool collapsing) {
  const std::size_t nodes = 2 * at(n) - 1;
  if (!collapsing)
    return std::equal(a.begin() + 1, a.begin() + static_cast<long>(nodes), b.begin() + 1);
  const int end = staying_end(a, n);
  if (end != staying_end(b, n)) return false;
  for (int v = 1; v < end; ++v) {
    if (v != n && staying_ancestor(a, v, n) != staying_ancestor(b, v, n)) return false;
  }
  return true;
}

void forget_collapsed(std::span<std::int32_t> tree) {
  for (std::int32_t& entry : tree) entry = plain_ancestor(entry);
}

}  // namespace zeb
