// `collapse` and `qcollapse`: when branches count as absent. `condense` and `tzert`: trees in
// memory without such branches.
#include <array>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/process.h"
#include "console/output.h"
#include "engine/collapsing/collapsing.h"
#include "engine/commands.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

constexpr std::array<const char*, 7> rule_texts = {
    "Not collapsing unsupported branches",
    "Collapsing branches with no possible support (\"rule 3\")",
    "Collapsing branches when sets of ancestor and descendant are identical",
    "Collapsing branches if supported ambiguously (\"rule 1\")",
    "Collapsing branches under \"rule 4\"",
    "Collapsing trees with SPR",
    "Collapsing trees with TBR"};

void say_rule() { emit(rule_texts[at(collapsing.rule)], "\n"); }
void say_temporary() {
  emit(collapsing.temporary ? "Collapsing trees temporarily for consensus calculation\n"
                            : "Not collapsing trees temporarily for consensus calculation\n");
}
void say_automatic() {
  emit("Auto-collapse searches is ", collapsing.automatic ? "ON" : "OFF", "\n");
}

/// What one run of the command asked for; nothing is changed before all of it was read.
struct collapse_request {
  collapsing_settings wanted = collapsing;
  bool rule_given = false;
  bool temporary_given = false;
  bool automatic_given = false;

  void rule(int n) {
    wanted.rule = n;
    rule_given = true;
  }
  void temporary(bool on) {
    wanted.temporary = on;
    temporary_given = true;
  }
  void automatic(bool on) {
    wanted.automatic = on;
    automatic_given = true;
  }
};

[[noreturn]] void unknown_option(std::string_view text) {
  error_end("Unidentified string in collapse options:", text);
}

int numbered_rule() {
  int n = -1;
  if (!read_optional_int(&n) || (n != 1 && n != 3 && n != 4))
    error_end("Only rules for collapsing are rule 1, rule 3, and rule 4");
  return n == 1 ? 3 : n == 3 ? 1 : 4;
}

void read_word_option(collapse_request& request) {
  if (read_name() == 0) unknown_option(std::string(1, static_cast<char>(next_nonblank())));
  const std::string given(token());
  const auto is = [&](const char* option) { return is_prefix(given, option); };
  if (is("none")) return request.rule(0);
  if (is("rule")) return request.rule(numbered_rule());
  if (is("amb")) return request.rule(2);
  if (is("spr")) return request.rule(5);
  if (is("tbr")) return request.rule(6);
  if (is("tempcollapse")) return request.temporary(true);
  if (is("notempcollapse")) return request.temporary(false);
  if (is("auto")) return request.automatic(true);
  if (is("noauto")) return request.automatic(false);
  unknown_option(given);
}

void read_option(collapse_request& request) {
  switch (skip_blanks_peek()) {
    case '+':
    case '-':
      return request.temporary(next_nonblank() == '+');
    case '[':
    case ']':
      return request.automatic(next_nonblank() == '[');
    default:
      break;
  }
  int n = 0;
  if (!read_optional_int(&n)) return read_word_option(request);
  if (n < 0 || n > 6) unknown_option(std::to_string(n));
  request.rule(n);
}

/// Trees of the list, and after a "/" taxa; both may be missing.
struct condense_request {
  std::vector<std::uint8_t> trees;
  std::vector<std::uint8_t> ignored_taxa;  // empty: none
};

condense_request read_trees_and_taxa() {
  require_trees();
  condense_request request;
  request.trees.assign(at(store.ntrees), 0);
  if (!read_list(list_slash_ends | list_in_tree_buffer, 0, store.ntrees, "tree", request.trees))
    request.trees.assign(at(store.ntrees), 1);
  if (!accept_char('/')) {
    check_end();
    return request;
  }
  request.ignored_taxa.assign(at(matrix.ntax), 0);
  if (!read_list(list_plain, 0, matrix.ntax, "taxon", request.ignored_taxa))
    error_end("Expected a list of taxa to ignore");
  check_end();
  return request;
}

/// Collapses the chosen trees by one rule and says how many changed.
void condense_trees(int rule, const condense_request& request) {
  branch_judge judge(rule, request.ignored_taxa);
  int changed = 0;
  for (int t = 0; t < store.ntrees; ++t) {
    if (!request.trees[at(t)]) continue;
    show_progress("Condensing", t, store.ntrees);
    check_interrupt(1);
    const tree_span tree = stored_tree(t);
    const int nodes = node_limit(tree, matrix.ntax);
    judge.condense(tree);
    changed += node_limit(tree, matrix.ntax) != nodes;
  }
  clear_progress();
  emit("Condensed ", changed, changed == 1 ? " tree\n" : " trees\n");
}

}  // namespace

void collapse_command() {
  no_timing();
  if (skip_blanks_peek() == ';') {
    say_rule();
    say_temporary();
    say_automatic();
    return;
  }
  collapse_request request;
  while (skip_blanks_peek() != ';') read_option(request);
  collapsing = request.wanted;
  if (!settings.report) return;
  if (request.rule_given) say_rule();
  if (request.temporary_given) say_temporary();
  if (request.automatic_given) say_automatic();
}

void qcollapse_command() { toggle_command(collapsing.quick, "Quick collapse"); }

void condense_command() {
  require_data("condensing trees");
  const condense_request request = read_trees_and_taxa();
  if (collapsing.rule == 0) {
    say_rule();
    return;
  }
  condense_trees(collapsing.rule, request);
}

void tzert_command() {
  require_data("collapsing zero-length branches");
  constexpr int no_possible_support = 1;
  condense_trees(no_possible_support, read_trees_and_taxa());
}

}  // namespace zeb
