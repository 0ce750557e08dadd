// How the buffer lies in the arena, and how it grows.
//
// The cells of the trees come first, the vault's before the buffer's, then the pointers to them,
// then the group words. A change of capacity lays the buffer out again from the same address, so
// trees stay where they are and growing costs no copy.
#include "trees/tree_store.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/arena.h"
#include "base/command.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "matrix/matrix.h"

namespace zeb {

tree_store store;

namespace {

std::size_t group_words() { return at(store.group_words); }

/// Group words of the trees there are, in a row; they are laid out anew and copied back.
std::vector<std::uint32_t> saved_groups(int count) {
  std::vector<std::uint32_t> words;
  words.reserve(at(count) * group_words());
  for (int t = 0; t < count; ++t) {
    const std::uint32_t* row = store.group_rows[at(t)];
    words.insert(words.end(), row, row + group_words());
  }
  return words;
}

void restore_groups(const std::vector<std::uint32_t>& words, int count) {
  const std::size_t n = std::min(words.size(), at(count) * group_words());
  if (n > 0) std::memcpy(store.group_rows[0], words.data(), n * 4);
}

/// Takes the arena for `capacity` trees and a vault, and locks it. `kept` trees that stood after
/// the `old_vault` slots of the vault at the same address move to their new place. Where memory is
/// short nothing has moved.
void lay_out(int capacity, int vault_size, int old_vault, int kept) {
  const std::size_t rows = at(capacity) + at(vault_size);
  const std::size_t cells = at(store.nnodes);
  std::byte* const memory_low = arena.low;
  const std::span<tree_node> records = alloc_low<tree_node>(checked_product(rows, cells));
  const std::span<tree_node*> table = alloc_low<tree_node*>(rows);
  store.group_rows = calloc_table_low<std::uint32_t>(at(capacity), group_words());
  store.memory_low = memory_low;
  store.memory_high = arena.high;
  if (old_vault != vault_size && kept > 0) {
    std::memmove(records.data() + at(vault_size) * cells, records.data() + at(old_vault) * cells,
                 at(kept) * cells * sizeof(tree_node));
  }
  for (std::size_t r = 0; r < rows; ++r) table[r] = records.data() + r * cells;
  store.vault = {};
  store.vault.trees = table.first(at(vault_size));
  store.vault.maxtrees = vault_size;
  store.vault.nnodes = store.nnodes;
  store.trees = table.subspan(at(vault_size));
  store.maxtrees = capacity;
  store.ntrees = kept;
  if (store.labels.size() > at(kept)) store.labels.resize(at(kept));
  lock(&locks.tree_lock);
}

/// Bytes that a buffer needs, generously: what the searches keep per tree and node comes on top.
std::size_t bytes_needed(int capacity, int vault_size, bool with_margin) {
  const std::size_t rows = at(capacity) + at(vault_size);
  const std::size_t record = at(store.nnodes) * sizeof(tree_node) + sizeof(tree_node*);
  std::size_t bytes = checked_product(rows, record + group_words() * 4 + sizeof(std::uint32_t*));
  if (with_margin) bytes += checked_product(rows, 64) + at(store.nnodes) * 40;
  return bytes + 80;
}

std::size_t bytes_available() {
  return static_cast<std::size_t>(store.memory_high - store.memory_low);
}

/// The running command has temporary memory, which lies above the buffer.
bool has_temporary_memory() {
  return arena.low != arena.low_mark || arena.high != arena.high_mark || arena.live_scopes > 0 ||
         !store.unsettled.empty();
}

/// Memory that the running command may still use lies above the buffer: temporary memory, or what
/// later locks protect.
bool memory_is_shared() { return has_temporary_memory() || arena.lock_count != locks.tree_lock; }

void move_into_arena(int capacity, int vault_size) {
  const int kept = std::min(store.ntrees, capacity);
  const int old_vault = store.vault.maxtrees;
  const int old_capacity = store.maxtrees;
  const int all = store.ntrees;
  const std::vector<std::uint32_t> words = saved_groups(all);
  unlock(&locks.tree_lock);
  try {
    lay_out(capacity, vault_size, old_vault, kept);
  } catch (...) {
    // All is where it was, but for the tables.
    free_to_low(store.memory_low);
    lay_out(old_capacity, old_vault, old_vault, all);
    restore_groups(words, all);
    throw;
  }
  restore_groups(words, kept);
}

/// Grows in system memory, for as long as the command runs.
void grow_outside_arena(int capacity) {
  const std::size_t cells = at(store.nnodes);
  const int kept = std::min(store.ntrees, capacity);
  const bool has_room = at(capacity) * cells <= store.unsettled.size();
  // Half as much again, since a buffer that grows once mostly grows on.
  std::vector<tree_node> records(has_room ? 0 : (at(capacity) + at(capacity) / 2) * cells);
  std::vector<std::uint32_t> groups = saved_groups(kept);
  groups.resize(at(capacity) * group_words(), 0);
  std::vector<tree_node*> rows(at(capacity));
  std::vector<std::uint32_t*> group_rows(at(capacity));
  // All memory is there.
  if (!has_room) {
    for (int t = 0; t < kept; ++t) {
      std::memcpy(records.data() + at(t) * cells, store.trees[at(t)], cells * sizeof(tree_node));
    }
    store.unsettled.swap(records);
  }
  store.unsettled_groups.swap(groups);
  store.unsettled_rows.swap(rows);
  store.unsettled_group_rows.swap(group_rows);
  for (std::size_t t = 0; t < at(capacity); ++t) {
    store.unsettled_rows[t] = store.unsettled.data() + t * cells;
    store.unsettled_group_rows[t] = store.unsettled_groups.data() + t * group_words();
  }
  store.trees = store.unsettled_rows;
  store.group_rows = store.unsettled_group_rows;
  store.maxtrees = capacity;
}

bool fits(int capacity, int vault_size) {
  return bytes_needed(capacity, vault_size, capacity > store.maxtrees) <= bytes_available();
}

[[noreturn]] void refuse_capacity(int capacity, int vault_size) {
  const std::size_t other = arena.size - std::min(arena.size, bytes_available());
  const double bytes = static_cast<double>(other + bytes_needed(capacity, vault_size, true));
  error_end("Cannot make tree space for", capacity, "trees",
            text_of("(needs \"mxram %.0f\" or more)", std::ceil(bytes / 1e6)));
}

}  // namespace

void create_tree_buffer() {
  ALWAYS_CHECK(locks.matrix_lock != 0, "trees need the matrix below them");
  store.nnodes = matrix.nnodes;
  lay_out(100, 0, 0, 0);
}

void forget_tree_buffer() {
  const bool include_absent = store.include_absent;
  const int words = store.group_words;
  store = {};
  store.include_absent = include_absent;
  store.group_words = words;
}

void set_group_words(int words) { store.group_words = words; }

void settle_tree_buffer() {
  if (store.unsettled.empty()) return;
  release_command_memory();
  const auto take_in = [] {
    if (store.ntrees > 0) {
      std::memcpy(store.trees[0], store.unsettled.data(),
                  at(store.ntrees) * at(store.nnodes) * sizeof(tree_node));
    }
    store.unsettled = {};
    store.unsettled_groups = {};
    store.unsettled_rows = {};
    store.unsettled_group_rows = {};
  };
  try {
    move_into_arena(store.maxtrees, 0);
  } catch (const command_unwinding&) {
    take_in();  // the room is there, as it is after every failure
    throw;
  }
  take_in();
}

bool set_maxtrees(int n, bool report, bool silent_failure) {
  if (capacity_scopes() > 0) return false;
  if (n != store.maxtrees) {
    if (store.vault.maxtrees > 0) {
      if (silent_failure) return false;
      error_end("Cannot increase tree-space when tree-vault is set");
    }
    if (n < store.ntrees && !silent_failure) {
      warning("There are", store.ntrees, "trees in memory.", "\nResetting maxtrees to", n,
              "will discard", store.ntrees - n, "trees");
    }
    if (!fits(n, 0)) {
      if (silent_failure) return false;
      refuse_capacity(n, 0);
    }
    if (memory_is_shared()) {
      grow_outside_arena(n);
    } else {
      move_into_arena(n, 0);
    }
    if (store.ntrees > n) set_tree_count(store, n);
  }
  if (report) report_line("Space for", store.maxtrees, "trees in memory");
  return true;
}

void make_room_for_trees(std::size_t count) {
  const std::size_t needed = at(store.ntrees) + count;
  const std::size_t capacity = at(store.maxtrees);
  if (needed <= capacity) return;
  if (store.vault.maxtrees > 0)
    error_end("Cannot increase tree-space when tree-vault is set\nTree buffer is full");
  drop_packed_data();
  const std::size_t larger = capacity + (needed - capacity + 99) / 100 * 100;
  if (larger > 1'000'000'000 || !set_maxtrees(static_cast<int>(larger), false, true)) {
    error_end("Tree buffer is full");
  }
}

void set_maxtrees_and_vault(int n, int vault_size) {
  if (n < store.ntrees) {
    warning("There are", store.ntrees, "trees in memory.", "\nResetting maxtrees to", n,
            "will discard", store.ntrees - n, "trees");
  }
  if (!fits(n, vault_size)) refuse_capacity(n, vault_size);
  if (has_temporary_memory()) {
    error_end("Cannot make tree space for", n, "trees");
  }
  move_into_arena(n, vault_size);
}

tree_span take_slot(bool may_grow, std::string_view no_space) {
  if (store.ntrees >= store.maxtrees) {
    if (!may_grow) error_end(no_space);
    if (store.vault.maxtrees > 0) {
      error_end("Cannot increase tree-space when tree-vault is set\n" + std::string(no_space));
    }
    const int capacity = store.maxtrees / 10 * 10 + 10;
    warning("To store a new tree, maxtrees will be increased to", capacity);
    if (!set_maxtrees(capacity, false, true)) error_end(no_space);
  }
  const int slot = store.ntrees;
  set_tree_count(store, slot + 1);
  return stored_tree(slot);
}

void note_full_buffer(bool full) { store.cut_short = full; }

void require_trees() {
  if (store.ntrees == 0) error_end("Tree(s) are required");
}

void check_tree_number(int tree) {
  if (tree < 0) error_end("Must give", "tree number");
  if (tree >= store.ntrees) error_end("Tree-buffer has", store.ntrees, "trees");
}

void check_node_number(int tree, int node) {
  if (node < 0) error_end("Must give", "node", "number");
  const const_tree_span record = stored_tree(tree);
  if (node >= node_limit(record, matrix.ntax) || (node < matrix.ntax && is_absent(record, node))) {
    error_end("No node", node, "in tree", tree);
  }
}

}  // namespace zeb
