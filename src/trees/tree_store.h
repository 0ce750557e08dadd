// The trees in memory: one buffer of slots in the arena, and the vault beside it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "trees/tree_record.h"
#include "trees/tree_slots.h"

namespace zeb {

/// The tree buffer, whose capacity `hold` sets. Written in trees/ only.
struct tree_store : tree_slots {
  tree_store() {
    maxtrees = 100;
    group_words = 1;
  }

  tree_slots vault;         // trees that only `tvault` changes; without groups
  int capacity_scopes = 0;  // while above 0 neither the capacity nor the vault can change

  bool include_absent = false;  // `absincl =`: absent taxa of read trees join at the base

  // Where the trees start in the arena, and how far the other stack may come.
  std::byte* memory_low = nullptr;
  std::byte* memory_high = nullptr;
  // Cells of a buffer that grew while its command had temporary memory above the buffer: they wait
  // here, and go into the arena when the command is over. Empty otherwise.
  std::vector<tree_node> unsettled;
  std::vector<tree_node*> unsettled_rows;
  std::vector<std::uint32_t> unsettled_groups;
  std::vector<std::uint32_t*> unsettled_group_rows;
};
extern tree_store store;

/// A slot of the buffer, of the vault.
inline tree_span stored_tree(int number) { return slot_of(store, number); }
inline tree_span vault_tree(int number) { return slot_of(store.vault, number); }

/// Next free slot, `ntrees` one higher. Full: with `may_grow` the capacity goes to the next
/// multiple of ten, with a warning; else, and where it can't grow, the error `no_space`. Growing
/// moves the trees and releases packed data and search workspace.
tree_span take_slot(bool may_grow = false,
                    std::string_view no_space = "No space to store new trees (increase maxtrees)");
/// A search tells whether it ended with all slots of the buffer full.
void note_full_buffer(bool full);
/// As `hold N`. Returns false where it can't be done and `silent_failure` allows that, and within a
/// `fixed_capacity_scope`. With `report` the capacity is printed.
bool set_maxtrees(int n, bool report, bool silent_failure = false);
/// Room for `count` more trees, the capacity going up by whole hundreds; packed data go. Error
/// where the vault is set or memory is short.
void make_room_for_trees(std::size_t count);
/// As `hold N/V`: capacity and vault at once, by a command that has no temporary memory; the vault
/// must be empty.
void set_maxtrees_and_vault(int n, int vault_size);
/// Words of group bits that each tree has; before data are read.
void set_group_words(int words);

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

/// "Tree(s) are required" without trees; "Tree-buffer has" N "trees" for a number past the end.
void require_trees();
void check_tree_number(int tree);
/// "Must give node number" for a negative one; "No node" N "in tree" T past the end or absent.
void check_node_number(int tree, int node);

/// New data: an empty buffer of 100 slots, above the matrix in the arena.
void create_tree_buffer();
/// Data are gone, and the trees with them. The settings stay.
void forget_tree_buffer();
/// The command is over: a buffer that grew outside of the arena goes into it.
void settle_tree_buffer();

}  // namespace zeb
