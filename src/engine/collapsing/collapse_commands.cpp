// `collapse` and `qcollapse`: when branches count as absent. `condense` and `tzert`: trees in
// memory without such branches.
#include <array>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/settings.h"
#include "engine/collapsing/collapsing.h"
#include "engine/commands.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/options.h"
#include "language/toggles.h"
#include "matrix/matrix.h"
#include "trees/branch_labels.h"
#include "trees/tree_store.h"
#include "trees/tree_undo.h"

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
  collapsing_settings wanted;
  bool rule_given = true;  // each is off until its option comes
  bool temporary_given = true;
  bool automatic_given = true;
};

void set_rule(collapse_request& request, int n) {
  request.wanted.rule = n;
  request.rule_given = true;
}

/// "rule N": the rules have numbers of their own in the literature.
void read_numbered_rule(collapse_request& request) {
  int n = -1;
  if (!read_optional_int(&n) || (n != 1 && n != 3 && n != 4))
    error_end("Only rules for collapsing are rule 1, rule 3, and rule 4");
  set_rule(request, n == 1 ? 3 : n == 3 ? 1 : 4);
}

constexpr auto wanted = &collapse_request::wanted;

constexpr option<collapse_request> rule_row(std::string_view keyword, int n) {
  return choice<wanted, &collapsing_settings::rule>(keyword, n)
      .also<&collapse_request::rule_given>(1);
}

constexpr option<collapse_request> temporary_row(std::string_view sign, int on) {
  return choice<wanted, &collapsing_settings::temporary>(sign, on)
      .also<&collapse_request::temporary_given>(1);
}
constexpr option<collapse_request> automatic_row(std::string_view sign, int on) {
  return choice<wanted, &collapsing_settings::automatic>(sign, on)
      .also<&collapse_request::automatic_given>(1);
}

constexpr command_options rows = {
    rule_row("none", 0).help("no branch is collapsed"),
    form<read_numbered_rule>("rule").argument("N").help(
        "rules 1, 3 and 4 by their numbers in the literature"),
    rule_row("amb", 2).help("branches whose two ends have identical state sets"),
    rule_row("spr", 5).help("branches that are missing in some tree as good, one SPR move away"),
    rule_row("tbr", 6).help("the same with TBR moves"),
    toggle<wanted, &collapsing_settings::temporary>("tempcollapse")
        .also<&collapse_request::temporary_given>(1)
        .help("collapse trees for the calculation of consensus trees only"),
    toggle<wanted, &collapsing_settings::automatic>("auto")
        .also<&collapse_request::automatic_given>(1)
        .help("condense the trees in memory after each search"),
    temporary_row("+", 1).help("as tempcollapse"),
    temporary_row("-", 0).help("as notempcollapse"),
    automatic_row("[", 1).help("as auto"),
    automatic_row("]", 0).help("as noauto"),
};

void read_number_sign_or_word(collapse_request& request) {
  // The number first: in "-1" the sign is no option of its own.
  int n = 0;
  if (!read_optional_int(&n)) {
    if (!read_sign(request, collapse_options)) read_option(request, collapse_options);
    return;
  }
  if (n < 0 || n > 6) error_end_f(collapse_options.errors.unknown, std::to_string(n).c_str());
  set_rule(request, n);
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
  tree_undo undo(request.trees);
  for (int t = 0; t < store.ntrees; ++t) {
    if (!request.trees[at(t)]) continue;
    show_progress("Condensing", t, store.ntrees);
    check_interrupt();
    const tree_span tree = stored_tree(t);
    const int nodes = node_limit(tree, matrix.ntax);
    const labels_in_change labels(t);
    judge.condense(tree);
    labels.put_back();
    changed += node_limit(tree, matrix.ntax) != nodes;
  }
  undo.keep();
  clear_progress();
  emit("Condensed ", counted(changed, "tree", "trees"), "\n");
}

}  // namespace

constexpr option_table collapse_options =
    rows.table("collapse", {.unknown = "Unidentified string in collapse options: %s"})
        .with_changes([] {
          const collapsing_settings standard;
          std::string text;
          if (collapsing.rule != standard.rule) text += std::to_string(collapsing.rule) + " ";
          if (collapsing.temporary != standard.temporary) text += "notempcollapse ";
          if (collapsing.automatic != standard.automatic) text += "auto ";
          return text.substr(0, text.size() - (text.empty() ? 0 : 1));
        });

void collapse_command() {
  no_timing();
  if (skip_blanks_peek() == ';') {
    say_rule();
    say_temporary();
    say_automatic();
    return;
  }
  collapse_request request{collapsing, false, false, false};
  while (skip_blanks_peek() != ';') read_number_sign_or_word(request);
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
