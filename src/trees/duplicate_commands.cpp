// `tequal` and `unique`: duplicate trees shown and removed. `sort`: trees in order.
#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "language/lexer.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/constraints/constraint_test.h"
#include "trees/drawing/text_lines.h"
#include "trees/hooks.h"
#include "trees/tree_equality.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

std::vector<double> sort_keys() {
  std::vector<double> keys(at(store.ntrees));
  if (!accept_char('=')) {
    if (!hooks_of_trees.score_trees) error_end("Trees can't be sorted by score yet");
    hooks_of_trees.score_trees(keys);
    return keys;
  }
  read_word();
  constexpr std::string_view keys_by_name[] = {"mono"};
  if (find_keyword(token(), keys_by_name, true) < 0)
    error_end("Expected \"mono\" after \"sort =\"");
  require_constraints();
  constraint_test test;
  for (int t = 0; t < store.ntrees; ++t) keys[at(t)] = test.judge(stored_tree(t)).violated;
  return keys;
}

}  // namespace

void tequal_command() {
  const std::vector<std::uint8_t> chosen = read_tree_list();
  check_end();
  const std::vector<int> first = first_equal_trees(chosen);
  std::vector<std::string> sets(first.size());
  for (int t = 0; t < store.ntrees; ++t) {
    const int original = first[at(t)];
    if (original >= 0 && original != t) sets[at(original)] += " " + std::to_string(t);
  }
  bool any = false;
  for (int t = 0; t < store.ntrees; ++t) {
    if (sets[at(t)].empty()) continue;
    emit_broken_at_blanks("Identical trees: " + std::to_string(t) + sets[at(t)]);
    any = true;
  }
  if (!any) report_line("No identical trees");
}

void unique_command() {
  const std::vector<std::uint8_t> chosen = read_tree_list();
  check_end();
  const std::vector<int> first = first_equal_trees(chosen);
  std::vector<std::uint8_t> keep(chosen.size(), 1);
  for (int t = 0; t < store.ntrees; ++t) keep[at(t)] = first[at(t)] < 0 || first[at(t)] == t;
  const char* note = constraints.defined() ? keep_fulfilling(keep) : "";
  const int before = store.ntrees;
  select_trees(store, keep);
  emit(before - store.ntrees, " trees discarded, ", store.ntrees, " trees retained", note, "\n");
}

void sort_command() {
  require_trees();
  const std::vector<double> keys = sort_keys();
  check_end();
  std::vector<int> order(keys.size());
  std::iota(order.begin(), order.end(), 0);
  std::ranges::stable_sort(order, [&](int a, int b) { return keys[at(a)] < keys[at(b)]; });
  reorder_trees(store, order);
  report_line(store.ntrees, "trees sorted");
}

}  // namespace zeb
