// `tvault`: trees kept apart from all that rewrites the buffer.
#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/drawing/text_lines.h"
#include "trees/hooks.h"
#include "trees/notation/parenthetical_writer.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

constexpr const char* not_set = "Tree-vault not set (set with \"hold N/V\")\n";

void show_vault() {
  no_timing();
  if (store.vault.maxtrees == 0) {
    emit(not_set);
  } else {
    emit(text_of("Tree-vault with %i trees (max. storage %i)\n", store.vault.ntrees,
                 store.vault.maxtrees));
  }
}

std::vector<std::uint8_t> read_trees(int count, const char* kind) {
  std::vector<std::uint8_t> chosen(at(count));
  if (!read_list(list_plain, 0, count, kind, chosen)) chosen.assign(at(count), 1);
  return chosen;
}

void put_in_vault(const_tree_span tree) {
  std::ranges::copy(tree, vault_tree(store.vault.ntrees).begin());
  set_tree_count(store.vault, store.vault.ntrees + 1);
}

void put_in() {
  require_trees();
  const std::vector<std::uint8_t> chosen = read_trees(store.ntrees, "tree");
  int placed = 0;
  bool full = false;
  for (int t = 0; t < store.ntrees && !full; ++t) {
    if (!chosen[at(t)]) continue;
    full = store.vault.ntrees >= store.vault.maxtrees;
    if (full) break;
    put_in_vault(stored_tree(t));
    copy_labels(store, t, store.vault, store.vault.ntrees - 1);
    ++placed;
  }
  if (full) {
    emit(text_of("Cannot store more trees in vault (reached max., %i)\n", store.vault.maxtrees));
  }
  emit(text_of("Placed %i trees in vault (vault now with %i trees)\n", placed, store.vault.ntrees));
}

void take_out() {
  const std::vector<std::uint8_t> chosen = read_trees(store.vault.ntrees, "vault-tree");
  int taken = 0;
  bool full = false;
  for (int t = 0; t < store.vault.ntrees && !full; ++t) {
    if (!chosen[at(t)]) continue;
    full = store.ntrees >= store.maxtrees;
    if (full) break;
    std::ranges::copy(vault_tree(t), take_slot().begin());
    copy_labels(store.vault, t, store, store.ntrees - 1);
    ++taken;
  }
  if (full) {
    emit(text_of("Cannot retrieve more trees from vault (reached maxtrees, %i)\n", store.maxtrees));
  }
  emit(text_of("Retrieved %i trees from vault (%i trees now in memory)\n", taken, store.ntrees));
}

/// A tree whose ancestors stand in an array of the macro language.
void put_array_in() {
  if (!macros_on() || !hooks_of_trees.user_arrays.read_name) {
    error_end("This option is valid only when macros are enabled");
  }
  const std::vector<double> values =
      hooks_of_trees.user_arrays.values(hooks_of_trees.user_arrays.read_name());
  std::vector<tree_node> tree(at(matrix.nnodes), 0);
  for (std::size_t i = 0; i < std::min(values.size(), tree.size()); ++i) {
    tree[i] = std::abs(values[i]) < 1e9 ? static_cast<tree_node>(values[i]) : -1;
  }
  const std::string fault = check_tree_record(tree, matrix.ntax);
  if (!fault.empty()) error_end("The array is not a tree:", fault);
  if (store.vault.ntrees >= store.vault.maxtrees) {
    emit(text_of("Cannot store more trees in vault (reached max., %i)\n", store.vault.maxtrees));
    return;
  }
  normalise_tree(tree, matrix.ntax);
  put_in_vault(tree);
  emit(text_of("Placed %i trees in vault (vault now with %i trees)\n", 1, store.vault.ntrees));
}

void write_vault() {
  emit(text_of("tread '%i trees from vault'\n", store.vault.ntrees));
  for (int t = 0; t < store.vault.ntrees; ++t) {
    emit_broken_at_blanks(stored_tree_text(vault_tree(t)) +
                          (t + 1 < store.vault.ntrees ? "*" : ";"));
  }
  if (store.vault.ntrees == 0) emit(";\n");
}

}  // namespace

void tvault_command() {
  if (skip_blanks_peek() == ';') {
    show_vault();
    return;
  }
  if (capacity_scopes() > 0) {
    error_end("Cannot access tree-vault during recursive sectorial searches");
  }
  require_data("using the tree-vault");
  if (store.vault.maxtrees == 0) error_end("Tree-vault not set (set with \"hold N/V\")");
  if (accept_char('>')) {
    put_in();
  } else if (accept_char('<')) {
    take_out();
  } else if (accept_char('-')) {
    set_tree_count(store.vault, 0);
    emit("Cleared tree-vault\n");
  } else if (accept_char('*')) {
    write_vault();
  } else if (accept_char('!')) {
    put_array_in();
  } else {
    error_end("Expected \">\", \"<\", \"-\" or \"*\" after \"tvault\"");
  }
}

}  // namespace zeb
