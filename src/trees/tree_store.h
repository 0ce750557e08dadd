// The trees in memory: ancestor arrays in one buffer of fixed capacity, with groups, vault and the
// tag tree.
//
// A tree is an array of `nnodes` ancestors. Terminals are 0 to ntax-1, the root is ntax, the other
// internal nodes follow; tree[ntax] holds the largest node number plus one; an absent taxon has
// ancestor 0. Normalised, two equal trees are equal arrays.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

using tree_node = std::int32_t;
using tree_span = std::span<tree_node>;
using const_tree_span = std::span<const tree_node>;

/// The trees in memory, numbered from 0 by position. Written in trees/ only, but for `ntrees` and
/// the trees' contents, which searches set through `store_slot` and its sisters.
struct tree_store {
  std::span<tree_node*>
      trees;           // `maxtrees` records of `nnodes` ancestors each, contiguous, in the arena
  int maxtrees = 100;  // capacity, set by `hold`
  int ntrees = 0;      // trees in use
  int nnodes = 0;      // cells of a record; 0 without data

  int tgroup_limit = 32;                      // tree groups, `tgroup +N` before data are read
  int tgroup_words = 1;                       // 32-bit words of membership a tree
  std::span<std::uint32_t*> tree_groups;      // maxtrees rows of tgroup_words
  std::vector<std::uint32_t> defined_groups;  // tgroup_words: groups that exist
  std::vector<std::string> group_names;       // tgroup_limit
  int next_auto_group = 0;                    // cycles from 0 to tgroup_limit - 1
  int last_auto_group = -1;                   // group made last by automatic placing; -1 none
  bool auto_group = true;                     // `tgroup [no]auto`

  int vault_size = 0;           // capacity of the vault; 0 none
  int vault_trees = 0;          // trees in it
  std::span<tree_node*> vault;  // vault_size records

  int sectorial_recursion = 0;  // depth of recursive sectorial searches, set by them: while above 0
                                // neither the capacity nor the vault can change

  bool include_absent = false;  // `absincl =`: absent taxa of read trees join at the base

  // Where the records start in the arena, and how far the other stack may come.
  std::byte* memory_low = nullptr;
  std::byte* memory_high = nullptr;
  // Records of a buffer that grew while its command had temporary memory behind the buffer: they
  // wait here, and go into the arena when the command is over. Empty otherwise.
  std::vector<tree_node> unsettled;
  std::vector<tree_node*> unsettled_rows;
  std::vector<std::uint32_t> unsettled_groups;
  std::vector<std::uint32_t*> unsettled_group_rows;
};
extern tree_store store;

/// A tree with a text per node, which many commands write and the display prints on branches.
struct tag_store {
  bool tags_on = false;  // `ttags =`: tree-printing commands store their texts
  bool tags_present = false;
  bool tags_add = false;               // `tread [`
  std::vector<tree_node> tag_tree;     // nnodes
  std::vector<std::string> tag_texts;  // nnodes, each under tag_size bytes
  std::string tag_title;               // at most 512 characters
  int tag_size = 128;
  char tag_separator = 0;   // '\\' with `ttags [`
  int tag_width = 0;        // 0 no limit
  char tag_position = 'c';  // a, b, c, d
};
extern tag_store tags;

/// Cells of stored tree `number`, which must be below `maxtrees`. The span is good until the
/// capacity changes.
inline tree_span stored_tree(int number) {
  return {store.trees[static_cast<std::size_t>(number)], static_cast<std::size_t>(store.nnodes)};
}
inline tree_span vault_tree(int number) {
  return {store.vault[static_cast<std::size_t>(number)], static_cast<std::size_t>(store.nnodes)};
}

// ---- operations on one tree (any array in the form above) ----

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
/// Terminals of the clade of `node`, flagged in `marks` (other entries are left alone).
void mark_terminals(const_tree_span tree, int ntax, int node, std::span<std::uint8_t> marks);
int terminals_in(const_tree_span tree, int ntax);
/// Joins absent taxa at a new root, with the tree as their sister.
void include_absent_taxa(tree_span tree, int ntax);
bool is_absent(const_tree_span tree, int terminal);
inline int node_limit(const_tree_span tree, int ntax) {
  return tree[static_cast<std::size_t>(ntax)];
}

/// Descendant lists of a tree, in increasing node number; polytomies allowed. For walks outside
/// searches.
struct descendant_lists {
  std::vector<int> first;    // per node: first descendant, -1 none
  std::vector<int> sibling;  // per node: next descendant of the same ancestor, -1 none
  std::vector<int> count;    // per node: descendants
};
descendant_lists descendants_of(const_tree_span tree, int ntax);
/// Internal nodes from the root outward, each after its ancestor.
std::vector<int> nodes_rootward_first(const descendant_lists& lists, int ntax);

// ---- the buffer ----

/// Next free slot, `ntrees` one higher. With a group name and automatic groups on, the tree gets a
/// group of its own. Full: with `may_grow` the capacity goes to the next multiple of ten, with a
/// warning; else, and where it can't grow, the error `no_space`. Growing moves the trees and
/// releases packed data and search workspace.
tree_span store_slot(std::string_view group_name, bool may_grow,
                     std::string_view no_space = "No space to store new trees (increase maxtrees)");
/// As `hold N`. Returns false where it can't be done and `silent_failure` allows that, and during a
/// recursive sectorial search. With `report` the capacity is printed.
bool set_maxtrees(int n, bool report, bool silent_failure = false);
/// As `hold N/V`: capacity and vault at once, by a command that has no temporary memory; the vault
/// must be empty.
void set_maxtrees_and_vault(int n, int vault_size);
/// Keeps the flagged trees, in order; group bits move with them.
void select_trees(std::span<const std::uint8_t> keep);
/// Puts the trees in another order: tree order[i] becomes tree i. Group bits move with them.
void reorder_trees(std::span<const int> order);
/// Puts trees first to last-1 into the next automatic group.
void tag_tree_group(int first, int last, std::string_view name);
bool in_tree_group(int tree, int group);
void add_to_tree_group(int tree, int group);
/// Clears the group's bit in all trees.
void clear_tree_group(int group);
bool tree_group_defined(int group);
/// "Tree(s) are required" without trees; "Tree-buffer has" N "trees" for a number past the end.
void require_trees();
void check_tree_number(int tree);
/// "Must give node number" for a negative one; "No node" N "in tree" T past the end or absent.
void check_node_number(int tree, int node);

// ---- parenthetical text: the one parser and the one writer ----

/// Writes a tree as nested parentheses. `label` gives the text of a terminal, `tag` (may be empty)
/// the text behind a node's closing parenthesis or label. No recursion on the machine stack.
std::string parenthetical_text(const_tree_span tree, int ntax,
                               const std::function<std::string(int)>& label,
                               const std::function<std::string(int)>& tag = {});

// ---- drawing (text diagram) ----

/// Prints the diagram of a tree with `node_texts` (by node; may be empty) on the branches, and
/// stores tags when `ttags =` is on. `title` is printed above, and becomes the tag title.
void draw_tree(const_tree_span tree, std::string_view title,
               std::span<const std::string> node_texts);

}  // namespace zeb
