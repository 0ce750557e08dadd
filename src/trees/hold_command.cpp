// `hold`, `keep`, `tchoose`: room for trees, and which of them stay.
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/drawing/text_lines.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

/// "+N" and "-N" count from the trees there are; a second sign stands for 1.
std::int64_t read_difference(int sign) {
  if (accept_char(sign)) return 1;
  const int n = read_int();
  if (n < 0) error_end("Must give", "number", "of trees");
  return n;
}

std::int64_t read_capacity() {
  if (accept_char('+')) return store.ntrees + read_difference('+');
  if (accept_char('-')) return store.ntrees - read_difference('-');
  const int n = read_int();
  if (n < 0) error_end("Must give", "number", "of trees");
  return n;
}

void hold_with_vault(std::int64_t capacity) {
  if (skip_blanks_peek() == ';') error_end("Give size of vault");
  const int size = read_int();
  if (size < 0) error_end("Give size of vault");
  check_end();
  if (capacity < 1) error_end("Vault for trees must have two numbers > 0 ");
  const bool clearing = size == 0 && store.vault.maxtrees > 0 && store.vault.ntrees == 0;
  if (store.vault.maxtrees > 0 && !clearing) {
    error_end("Cannot increase tree-space when tree-vault is set");
  }
  if (size == 0 && !clearing) error_end("Size of vault must be > 0 ");
  drop_packed_data();
  set_maxtrees_and_vault(static_cast<int>(capacity), size);
  if (clearing) {
    emit("Tree-vault not set (set with \"hold N/V\")\n");
  } else {
    emit(text_of("Tree-vault set for %i trees\n", size));
  }
}

void report_count(const char* what) { report_line(store.ntrees, what); }

}  // namespace

void hold_command() {
  no_timing();
  if (skip_blanks_peek() == ';') {
    report_line("Space for", store.maxtrees, "trees in memory");
    return;
  }
  require_data("re-setting maxtrees");
  const std::int64_t capacity = read_capacity();
  if (capacity > 2000000000) error_end("Cannot make tree space for", capacity, "trees");
  if (accept_char('/')) {
    if (capacity_scopes() > 0)
      error_end("Cannot reset tree-vault size under recursive sectorial searches");
    hold_with_vault(capacity);
    return;
  }
  check_end();
  if (capacity_scopes() > 0) return;
  if (capacity < 1) error_end("Number of trees to hold must be > 0");
  drop_packed_data();
  set_maxtrees(static_cast<int>(capacity), settings.report);
}

void keep_command() {
  const int n = read_int();
  if (n < 0) error_end("Must give", "number", "of trees");
  check_end();
  if (n < store.ntrees) set_tree_count(store, n);
  report_count("trees in memory");
}

void tchoose_command() {
  if (store.ntrees == 0) error_end("No trees to choose from");
  const std::vector<std::uint8_t> chosen = read_tree_list_or_last();
  check_end();
  std::string line = "Selecting tree(s) ";
  for (int t = 0; t < store.ntrees; ++t) {
    if (chosen[at(t)]) line += std::to_string(t) + ' ';
  }
  emit_broken_at_blanks(line);
  select_trees(store, chosen);
  report_count("trees selected");
}

}  // namespace zeb
