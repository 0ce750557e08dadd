// The trees that a search has found: kept in the slots of its context in internal numbering and
// normal form, found again through a hash, told apart with collapsed branches left out.
//
// The life of a stored tree. A swapper or a builder finds it as a binary tree, in any numbering of
// its internal nodes. Branches that the collapsing rule takes away are marked, by the node sets
// that are there at that moment, so marking costs no pass. `canonical_form` then renumbers the
// internal nodes in the order in which walks from the terminals to the root meet them, branches
// that stay from below and collapsed ones from above, so that equal trees are equal arrays, and all
// that counts lies at the front. A hash of that front gives one of 128 chains of records, in which
// the tree is compared with those stored before: with collapsed branches skipped, and, under rules
// by which trees of different length may become one, only with those of its own score. A tree that
// is new is linked into the chain and counted; one that is known leaves no trace, and a search that
// meets only known trees stops.
//
// From then on the tree stays in its slot until a better one is found (`purge_above`, in the midst
// of a swap) or the search ends (`filter_by_score`, and `drop_equal_by_full_rule` for rules that a
// search only approaches). Trees that must still be swapped stay until that is done. Slots close
// ranks, and the chains are made anew. At the end trees go back into the numbering of the matrix,
// without marks: what the user sees is the binary tree, which commands collapse when they are asked
// to.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "search/search_context.h"

namespace zeb {

/// Copies a stored tree into the working tree, as a plain binary tree. Internal error if `source`
/// is the working tree itself.
void fetch_tree(search_context& context, std::span<const std::int32_t> source);
/// The ancestor array in a slot, as long as trees of the search are.
std::span<std::int32_t> slot_tree(const search_context& context, int slot);
/// What is known of the tree in a slot.
tree_record& record_of(search_context& context, int slot);

/// Stores a tree in `slot` (the next free one, below the capacity) with its score, which is
/// computed where it isn't given. True if it is new, and counted; false if a copy is there.
bool store_tree(search_context& context, std::span<const std::int32_t> tree, int slot,
                double score = no_score);
/// Is the tree, with this score, new? Uses the free `slot` for its normal form; stores nothing.
bool tree_is_new(search_context& context, std::span<const std::int32_t> tree, int slot,
                 double score);
/// As store_tree, for a tree whose staying branches are known.
bool store_marked(search_context& context, std::span<const std::int32_t> tree, int slot,
                  double score, std::span<const std::uint8_t> marks);
/// Is a copy of the tree there?
bool is_stored(search_context& context, std::span<const std::int32_t> tree, double score,
               std::span<const std::uint8_t> marks);
/// Puts a tree into the place of the one in `slot`. False, and nothing is changed, if the slots
/// hold it already.
bool replace_stored(search_context& context, std::span<const std::int32_t> tree, int slot,
                    double score, std::span<const std::uint8_t> marks);
/// The same for a tree whose staying branches aren't known.
bool replace_tree(search_context& context, std::span<const std::int32_t> tree, int slot,
                  double score);
/// The normal form of a tree whose score this is, by which it can be told from others and stored in
/// other slots over the same data.
std::vector<std::int32_t> normal_form(search_context& context, std::span<const std::int32_t> tree,
                                      double score);
/// Is a tree of this normal form and score there?
bool has_form(search_context& context, std::span<const std::int32_t> form, double score);
/// As store_tree into the next slot, for a tree in normal form.
bool store_form(search_context& context, std::span<const std::int32_t> form, double score);
/// Takes a tree that already stands in `slot`, as a plain binary tree, into the records: normal
/// form, score, hash.
void adopt_tree(search_context& context, int slot);

/// The collapsing rule of the search, by its quick form: 0 to 6.
inline int search_level(const search_context& context) { return context.rules.collapse.rule; }
/// Marks of the tree in work under that rule: by node, 1 where the branch stays.
void mark_tree_in_work(const search_context& context, std::span<std::uint8_t> marks);

/// Drops all trees.
void forget_trees(search_context& context);
/// Drops the trees whose entry is 0. Slots move down; `swapping_index` and the tree shown follow.
void keep_trees(search_context& context, std::span<const std::uint8_t> keep);
/// A swap of the tree in `slot` ended with another one, of a better score: does the tree stay even
/// so, with neighbours that the swap didn't come to and for which there is room below `capacity`?
bool was_left(search_context& context, int slot, double score, int capacity);
/// The lowest score from `first_slot` on; `unknown_score` for no trees.
double best_stored(search_context& context, int first_slot);
/// Drops trees from `first_slot` on with a score above `limit`, save those that still have to be
/// swapped and the one being swapped. Slots move down, as in keep_trees.
void purge_above(search_context& context, double limit, int first_slot);

}  // namespace zeb
