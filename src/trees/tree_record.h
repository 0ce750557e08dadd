// One tree: an array of ancestors, and what is done to it.
//
// A record has `nnodes` cells. Terminals are 0 to ntax-1, the root is ntax, the other internal
// nodes follow; tree[ntax] holds the largest node number plus one; an absent taxon has ancestor 0.
// Normalised, two equal trees are equal arrays.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zeb {

using tree_node = std::int32_t;
using tree_span = std::span<tree_node>;
using const_tree_span = std::span<const tree_node>;

/// Renumbers internal nodes in order of first meeting, from the terminals 0, 1, 2... rootward.
/// `new_numbers`, if given, receives the new number of each old node, -1 for nodes that are gone.
void normalise_tree(tree_span tree, int ntax, std::vector<int>* new_numbers = nullptr);
/// Empty text if the array is a valid tree, else what is wrong with it.
std::string check_tree_record(const_tree_span tree, int ntax);
/// Removes the flagged terminals and every node left with one descendant, and normalises. Error
/// when none would be left.
void delete_taxa(tree_span tree, int ntax, std::span<const std::uint8_t> flags);
/// Removes internal nodes with a single descendant or none (a root above a single terminal stays)
/// and normalises. `new_numbers` as above.
void remove_redundant_nodes(tree_span tree, int ntax, std::vector<int>* new_numbers = nullptr);
/// Writes the record of a tree given as ancestors with any node from `ntax` up as the root: -1 for
/// the root and for what isn't in the tree. The array may be longer than a record; nodes with a
/// single descendant or none are dropped. `ancestors` is scratch afterwards.
void record_from_ancestors(std::vector<int>& ancestors, tree_span tree, int ntax,
                           std::vector<int>* new_numbers = nullptr);
/// The same without dropping anything: every node of `ancestors` must have no or several
/// descendants.
void normalise_ancestors(const std::vector<int>& ancestors, tree_span tree, int ntax,
                         std::vector<int>* new_numbers = nullptr);
/// Re-roots so that `terminal` is a descendant of the root, sister of all others; normalises.
/// Nothing happens where the tree doesn't hold it, or holds nothing else.
void reroot_tree(tree_span tree, int ntax, int terminal);
/// The same with any node in place of the terminal: the root comes onto the branch below it.
void reroot_on_branch(tree_span tree, int ntax, int node);
/// Moves the clade of `node` onto the branch below `target`, or with `as_descendant` makes it one
/// more descendant of the internal node `target`. False, with the tree unchanged, where `target`
/// lies within the clade or `node` is the root. Normalises.
bool move_clade(tree_span tree, int ntax, int node, int target, bool as_descendant);
/// Does `node` descend from `ancestor`, or is it the same?
bool descends_from(const_tree_span tree, int ntax, int node, int ancestor);
int terminals_in(const_tree_span tree, int ntax);
/// Joins absent taxa at a new root, with the tree as their sister.
void include_absent_taxa(tree_span tree, int ntax);
bool is_absent(const_tree_span tree, int terminal);
inline int node_limit(const_tree_span tree, int ntax) {
  return tree[static_cast<std::size_t>(ntax)];
}

}  // namespace zeb
