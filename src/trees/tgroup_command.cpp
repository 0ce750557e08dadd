// `tgroup`: named groups of trees; `absincl`: what becomes of taxa that a tree being read omits.
#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/group_definition.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "language/toggles.h"
#include "language/value_condition.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/constraints/constraint_test.h"
#include "trees/hooks.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

// Memory for the membership of every tree in the buffer hangs on it.
constexpr int most_tree_groups = 100'000;

/// The condition after "len", "nod" and "siz"; a bare number is the value itself.
value_condition read_value_or_condition(std::string_view word) {
  double value = 0;
  const int c = skip_blanks_peek();
  if (c >= '0' && c <= '9' && read_optional_float(&value)) {
    return {.lowest = value, .highest = value};
  }
  return read_condition(word);
}

bool select_trees_by(std::string_view word, std::span<std::uint8_t> selected) {
  const int count = store.ntrees;
  if (word == "mono") {
    require_constraints();
    constraint_test test;
    for (int t = 0; t < count; ++t) selected[at(t)] = test.judge(stored_tree(t)).violated == 0;
    return true;
  }
  if (word != "len" && word != "nod" && word != "siz") return false;
  const value_condition wanted = read_value_or_condition(word);
  std::vector<double> values(at(count));
  if (word == "len") {
    if (!hooks_of_trees.score_trees) error_end("Trees can't be selected by length yet");
    hooks_of_trees.score_trees(values);
  }
  for (int t = 0; t < count; ++t) {
    const const_tree_span tree = stored_tree(t);
    if (word == "nod") values[at(t)] = node_limit(tree, matrix.ntax) - matrix.ntax;
    if (word == "siz") values[at(t)] = terminals_in(tree, matrix.ntax);
    selected[at(t)] = wanted.holds(values[at(t)]);
  }
  return true;
}

int last_automatic_group() {
  if (tree_groups.last_automatic < 0) error_end("No tree group has been created automatically");
  return tree_groups.last_automatic;
}

group_kind tree_groups_kind() {
  return {.element_kind = "tree",
          .command = "tgroup",
          .limit = tree_groups.limit,
          .elements = store.ntrees,
          .defined = tree_group_defined,
          .name = [](int group) { return std::string_view(tree_groups.names[at(group)]); },
          .in_group = in_tree_group,
          .define = define_tree_group,
          .undefine = undefine_tree_group,
          .set_member = set_tree_group_member,
          .last_automatic = last_automatic_group,
          .selector = select_trees_by};
}

void place_automatically(bool on) {
  set_automatic_groups(on);
  show_toggle(on, "Automatic placing of trees in groups");
}

void change_limit() {
  const int limit = read_int();
  if (matrix.present) error_end("Number of tree-groups must be changed before reading data");
  if (limit < 1) error_end("Must give the number of tree-groups");
  if (limit > most_tree_groups)
    error_end("Can't define more than", most_tree_groups, "tree groups");
  set_tree_group_limit(limit);
  report_line("Space for", limit, "tree-groups");
}

}  // namespace

void tgroup_command() {
  no_timing();
  if (accept_char('+')) return change_limit();
  const int first = skip_blanks_peek();
  if (first == '/') {
    read_char();
    if (skip_blanks_peek() != ';') error_end("Must use =, > or <");
    return place_automatically(!tree_groups.automatic);
  }
  if ((first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z')) {
    read_word();
    constexpr std::string_view words[] = {"auto", "noauto"};
    const int word = find_keyword(token(), words, true);
    if (word < 0) error_end("Must use =, > or <");
    return place_automatically(word == 0);
  }
  require_data("defining groups of trees");
  define_groups(tree_groups_kind());
}

void absincl_command() {
  no_timing();
  toggle_command(store.include_absent, "Placing of absent taxa at the tree base");
}

}  // namespace zeb
