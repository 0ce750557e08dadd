// When are two trees of a search the same: normal form, hash and comparison, with collapsed
// branches left out. Trees are ancestor arrays in the internal numbering of the search.
#pragma once

#include <cstdint>
#include <span>

namespace zeb {

/// Top bit of an ancestor entry: the branch above this node is collapsed.
constexpr std::int32_t collapsed_bit = INT32_MIN;
inline bool is_collapsed(std::int32_t entry) { return entry < 0; }
inline std::int32_t plain_ancestor(std::int32_t entry) { return entry & 0x7fffffff; }

/// Renumbers the internal nodes of a binary tree of `n` terminals, rooted on terminal 0, in the
/// order in which walks rootward from terminals 1, 2, ... meet them: from n + 1 up where the branch
/// stays, from 2n - 2 down where `marks` (by node as numbered now; empty: all stay) holds 0. Sets
/// `collapsed_bit` on the latter and the root's entry to 2n - 1. The branch between root and
/// ingroup always stays, since it is one with the outgroup's. `scratch` holds 2n - 1 entries twice.
/// Returns the hash bucket, 0 to 127.
int canonical_form(std::span<std::int32_t> tree, int n, std::span<const std::uint8_t> marks,
                   std::span<std::int32_t> scratch);
/// The bucket of a tree in normal form.
int tree_bucket(std::span<const std::int32_t> tree, int n);
/// A number that trees in normal form share only if they are the same once collapsed branches are
/// gone, but for chance.
std::uint64_t tree_print(std::span<const std::int32_t> tree, int n);
/// Are two trees in normal form the same once collapsed branches are gone? `collapsing` false: the
/// plain arrays are compared.
bool same_collapsed_tree(std::span<const std::int32_t> a, std::span<const std::int32_t> b, int n,
                         bool collapsing);
/// Clears all `collapsed_bit`s.
void forget_collapsed(std::span<std::int32_t> tree);

}  // namespace zeb
