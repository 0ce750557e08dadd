#include "search/store/tree_identity.h"

#include <algorithm>

namespace zeb {
namespace {

std::int32_t& at(std::span<std::int32_t> s, int i) { return s[static_cast<std::size_t>(i)]; }
std::int32_t at(std::span<const std::int32_t> s, int i) { return s[static_cast<std::size_t>(i)]; }

/// Number behind the last node whose branch stays.
int staying_end(std::span<const std::int32_t> tree, int n) {
  int end = 2 * n - 1;
  while (end > n + 1 && is_collapsed(at(tree, end - 1))) --end;
  return end;
}

std::int32_t staying_ancestor(std::span<const std::int32_t> tree, int v, int n) {
  std::int32_t a = plain_ancestor(at(tree, v));
  while (a != n && is_collapsed(at(tree, a))) a = plain_ancestor(at(tree, a));
  return a;
}

}  // namespace

int canonical_form(std::span<std::int32_t> tree, int n, std::span<const std::uint8_t> marks,
                   std::span<std::int32_t> scratch) {
  const int nodes = 2 * n - 1;
  const std::span<std::int32_t> number = scratch.subspan(0, static_cast<std::size_t>(nodes));
  const std::span<std::int32_t> fresh =
      scratch.subspan(static_cast<std::size_t>(nodes), static_cast<std::size_t>(nodes));
  std::fill(number.begin() + n, number.end(), -1);
  at(number, n) = n;
  int next_staying = n + 1;
  int next_collapsed = nodes - 1;
  for (int t = 1; t < n; ++t) {
    for (std::int32_t v = plain_ancestor(at(tree, t)); at(number, v) < 0;) {
      const std::int32_t ancestor = plain_ancestor(at(tree, v));
      const bool stays = marks.empty() || marks[static_cast<std::size_t>(v)] != 0 || ancestor == n;
      at(number, v) = stays ? next_staying++ : next_collapsed--;
      v = ancestor;
    }
  }
  for (int v = 0; v < n; ++v) at(fresh, v) = at(number, plain_ancestor(at(tree, v)));
  for (int v = n + 1; v < nodes; ++v) {
    at(fresh, at(number, v)) = at(number, plain_ancestor(at(tree, v)));
  }
  at(fresh, n) = nodes;
  for (int v = next_staying; v < nodes; ++v) at(fresh, v) |= collapsed_bit;
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

bool same_collapsed_tree(std::span<const std::int32_t> a, std::span<const std::int32_t> b, int n,
                         bool collapsing) {
  const std::size_t nodes = 2 * static_cast<std::size_t>(n) - 1;
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
