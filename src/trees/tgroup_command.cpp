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
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

// Memory for the membership of every tree in the buffer hangs on it.
constexpr int most_tree_groups = 100'000;

struct selector_sources {
  tree_scorer scores = nullptr;
  constraint_check satisfies_constraints = nullptr;
};
selector_sources sources;

/// The condition behind "len", "nod" and "siz"; a bare number is the value itself.
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
    if (!sources.satisfies_constraints) {
      error_end("Trees can't be selected by constraints yet");
    }
    for (int t = 0; t < count; ++t) selected[at(t)] = sources.satisfies_constraints(t);
    return true;
  }
  if (word != "len" && word != "nod" && word != "siz") return false;
  const value_condition wanted = read_value_or_condition(word);
  std::vector<double> values(at(count));
  if (word == "len") {
    if (!sources.scores) error_end("Trees can't be selected by length yet");
    sources.scores(values);
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
  if (store.last_auto_group < 0) error_end("No tree group has been created automatically");
  return store.last_auto_group;
}

void undefine_tree_group(int group) {
  clear_tree_group(group);
  store.defined_groups[at(group / 32)] &= ~(1U << (group % 32));
  store.group_names[at(group)] = text_of("Group_%i", group);
}

group_kind tree_groups_kind() {
  return {.element_kind = "tree",
          .command = "tgroup",
          .limit = store.tgroup_limit,
          .elements = store.ntrees,
          .defined = tree_group_defined,
          .name = [](int group) { return std::string_view(store.group_names[at(group)]); },
          .in_group = in_tree_group,
          .define =
              [](int group, std::string_view name) {
                store.defined_groups[at(group / 32)] |= 1U << (group % 32);
                if (!name.empty()) store.group_names[at(group)] = name;
              },
          .undefine = undefine_tree_group,
          .set_member =
              [](int tree, int group, bool in) {
                std::uint32_t& word = store.tree_groups[at(tree)][group / 32];
                const std::uint32_t mask = 1U << (group % 32);
                word = in ? word | mask : word & ~mask;
              },
          .last_automatic = last_automatic_group,
          .selector = select_trees_by};
}

void set_tree_group_limit() {
  const int limit = read_int();
  if (matrix.present) error_end("Number of tree-groups must be changed before reading data");
  if (limit < 1) error_end("Must give the number of tree-groups");
  if (limit > most_tree_groups)
    error_end("Can't define more than", most_tree_groups, "tree groups");
  store.tgroup_limit = limit;
  report_line("Space for", limit, "tree-groups");
}

}  // namespace

void set_tree_scorer(tree_scorer scorer) { sources.scores = scorer; }
tree_scorer tree_scores() { return sources.scores; }
void set_constraint_check(constraint_check check) { sources.satisfies_constraints = check; }

void tgroup_command() {
  no_timing();
  if (accept_char('+')) return set_tree_group_limit();
  const int first = skip_blanks_peek();
  if (first == '/') {
    read_char();
    if (skip_blanks_peek() != ';') error_end("Must use =, > or <");
    store.auto_group = !store.auto_group;
    return show_toggle(store.auto_group, "Automatic placing of trees in groups");
  }
  if ((first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z')) {
    read_word();
    constexpr std::string_view words[] = {"auto", "noauto"};
    const int word = find_keyword(token(), words, true);
    if (word < 0) error_end("Must use =, > or <");
    store.auto_group = word == 0;
    return show_toggle(store.auto_group, "Automatic placing of trees in groups");
  }
  require_data("defining groups of trees");
  define_groups(tree_groups_kind());
}

void absincl_command() {
  no_timing();
  toggle_command(store.include_absent, "Placing of absent taxa at the tree base");
}

}  // namespace zeb
