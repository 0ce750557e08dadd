// The trees that a search has found: kept in the slots of the tree buffer in internal numbering and
// normal form, found again through a hash, told apart with collapsed branches left out.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "search/search_state.h"

namespace zeb {

/// Copies a stored tree into `searching.anx`, as a plain binary tree. Internal error if `source`
/// is `anx` itself.
void schgettree(std::span<const std::int32_t> source);
/// The ancestor array in a slot, as long as trees of the search are.
std::span<std::int32_t> slot_tree(int slot);

/// Stores a tree in `slot` (the next free one, `ntrees`, below `maxtrees`), with the score in
/// `pending_score` or its length. True if it is new, and counted; false if a copy is there.
bool store_tree(std::span<const std::int32_t> tree, int slot);
/// Is the tree, with this score, new? Uses the free `slot` for its normal form; stores nothing.
bool tree_is_new(std::span<const std::int32_t> tree, int slot, double score);
/// The same for a tree whose staying branches are known.
bool store_marked(std::span<const std::int32_t> tree, int slot, double score,
                  std::span<const std::uint8_t> marks);
/// Puts a tree into the place of the one in `slot`. False, and nothing is changed, if the buffer
/// holds it already.
bool replace_stored(std::span<const std::int32_t> tree, int slot, double score,
                    std::span<const std::uint8_t> marks);

/// The same for a tree whose staying branches aren't known.
bool replace_tree(std::span<const std::int32_t> tree, int slot, double score);
/// Takes a tree that already stands in `slot`, as a plain binary tree, into the records: normal
/// form, score, hash.
void adopt_tree(int slot);

/// The collapsing rule of the search, by its quick form: 0 to 6.
int search_level();
/// Marks of the tree in work under that rule: by node, 1 where the branch stays.
void mark_tree_in_work(std::span<std::uint8_t> marks);

/// Drops trees from `first_slot` on with a score above `limit`, save those that still have to be
/// swapped (`keep_until_swapped`) and the one being swapped. Slots move down; `swapping_index` and
/// `current_tree` follow.
void purge_above(double limit, int first_slot);
/// Drops the trees whose entry is 0. Slots move down; `swapping_index` and `current_tree` follow.
void keep_trees(std::span<const std::uint8_t> keep);

/// The note about trees dropped since others are the same as collapsed; nothing for none.
void tell_equal_as_collapsed(int dropped);

/// The end of a search: drops trees above `best` + suboptimal and, under a collapsing rule by which
/// trees of different length can be one, the later of each pair that is the same as collapsed.
void filter_by_score(double best);
/// The same with every tree scored and collapsed afresh; returns the best score (unknown_score
/// without trees). `label` is what the progress line calls the trees.
double recheck_trees(std::string_view label);

}  // namespace zeb
