// The trees in memory: one buffer of slots, with groups, vault and the tag tree.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "trees/tree_record.h"
#include "trees/tree_slots.h"
#include "trees/tree_walks.h"

namespace zeb {

/// The tree buffer: slots in the arena, one after the other, whose capacity `hold` sets. Written in
/// trees/ only.
struct tree_store : tree_slots {
  tree_store() {
    maxtrees = 100;
    tgroup_words = 1;
  }

  int tgroup_limit = 32;                      // tree groups, `tgroup +N` before data are read
  std::vector<std::uint32_t> defined_groups;  // tgroup_words: groups that exist
  std::vector<std::string> group_names;       // tgroup_limit
  int next_auto_group = 0;                    // cycles from 0 to tgroup_limit - 1
  int last_auto_group = -1;                   // group made last by automatic placing; -1 none
  bool auto_group = true;                     // `tgroup [no]auto`

  int vault_size = 0;           // capacity of the vault; 0 none
  int vault_trees = 0;          // trees in it
  std::span<tree_node*> vault;  // vault_size records

  int capacity_scopes = 0;  // while above 0 neither the capacity nor the vault can change

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

/// Slot `number` of the buffer.
inline tree_span stored_tree(int number) { return slot_of(store, number); }
inline tree_span vault_tree(int number) {
  return {store.vault[static_cast<std::size_t>(number)], static_cast<std::size_t>(store.nnodes)};
}

// ---- the buffer ----

/// Next free slot, `ntrees` one higher. With a group name and automatic groups on, the tree gets a
/// group of its own. Full: with `may_grow` the capacity goes to the next multiple of ten, with a
/// warning; else, and where it can't grow, the error `no_space`. Growing moves the trees and
/// releases packed data and search workspace.
tree_span store_slot(std::string_view group_name, bool may_grow,
                     std::string_view no_space = "No space to store new trees (increase maxtrees)");
/// As `hold N`. Returns false where it can't be done and `silent_failure` allows that, and during a
/// `fixed_capacity_scope`. With `report` the capacity is printed.
bool set_maxtrees(int n, bool report, bool silent_failure = false);
/// While one of these exists, neither the capacity of the buffer nor the vault changes: for
/// searches within searches, which know where the trees lie.
class fixed_capacity_scope {
 public:
  fixed_capacity_scope() { ++store.capacity_scopes; }
  ~fixed_capacity_scope() { --store.capacity_scopes; }
  fixed_capacity_scope(const fixed_capacity_scope&) = delete;
  fixed_capacity_scope& operator=(const fixed_capacity_scope&) = delete;
};
/// How many of them there are, one within the other.
inline int capacity_scopes() { return store.capacity_scopes; }

/// Empties the buffer for as long as it exists, and puts its trees and their groups back.
class buffer_aside {
 public:
  buffer_aside();
  ~buffer_aside();
  buffer_aside(const buffer_aside&) = delete;
  buffer_aside& operator=(const buffer_aside&) = delete;

 private:
  std::vector<tree_node> trees_;
  std::vector<std::uint32_t> groups_;
  int count_;
};

/// As `hold N/V`: capacity and vault at once, by a command that has no temporary memory; the vault
/// must be empty.
void set_maxtrees_and_vault(int n, int vault_size);
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
