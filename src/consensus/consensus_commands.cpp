// nelsen, majority, freqdifs and comcomp: one reader of their forms, and what each makes of it.
#include <algorithm>
#include <optional>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/process.h"
#include "consensus/commands.h"
#include "consensus/consensus.h"
#include "consensus/requests.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"

namespace zeb {
namespace {

/// What stands behind the command's word.
struct consensus_request {
  bool store = false;                  // "*": keep the result as the last tree
  int reference = -1;                  // "[J]" and "(J)": a tree whose groups are looked for
  bool as_table = false;               // "(J)"
  std::vector<std::uint8_t> trees;     // by number
  std::vector<std::uint8_t> excluded;  // by taxon
  int n_trees = 0;
  int n_excluded = 0;
};

int count_marks(std::span<const std::uint8_t> marks) {
  return static_cast<int>(std::count(marks.begin(), marks.end(), 1));
}

[[noreturn]] void invalid_option() { error_end("Invalid option for", command.command_name); }

void require_end() {
  if (skip_blanks_peek() != ';') invalid_option();
}

/// "J]" or "J)", from behind the opening mark.
int read_reference_tree(char closing) {
  int tree = -1;
  if (!read_optional_int(&tree) || tree < 0 || tree >= store.ntrees)
    error_end(command.command_name, "[N] requires a tree number");
  if (!accept_char(closing))
    error_end(command.command_name + " - expecting closing bracket or parnthesis");
  return tree;
}

void read_tree_list(consensus_request& request) {
  request.trees.assign(at(store.ntrees), 0);
  constexpr unsigned flags = list_slash_ends | list_has_fixed | list_in_tree_buffer;
  if (!read_list(flags, 0, store.ntrees, "tree", request.trees))
    std::fill(request.trees.begin(), request.trees.end(), std::uint8_t{1});
  request.n_trees = count_marks(request.trees);
  if (request.n_trees == 0) error_end("No trees specified");
  if (request.reference < 0 || !request.trees[at(request.reference)]) return;
  request.trees[at(request.reference)] = 0;
  if (--request.n_trees == 0) error_end("Can't compare tree with itself");
}

void read_excluded(consensus_request& request) {
  request.excluded.assign(at(matrix.ntax), 0);
  if (accept_char('/')) read_list(list_plain, 0, matrix.ntax, "taxon", request.excluded);
  request.n_excluded = count_marks(request.excluded);
  if (request.n_excluded == matrix.ntax) error_end("Cannot delete all terminals from a tree");
}

consensus_request read_request(bool has_reference_forms) {
  consensus_request request;
  if (store.ntrees == 0) error_end("No trees specified");
  if (accept_char('*')) request.store = true;
  const int c = skip_blanks_peek();
  if (c == '[' || c == '(') {
    if (has_reference_forms && !request.store) {
      next_nonblank();
      request.as_table = c == '(';
      request.reference = read_reference_tree(c == '(' ? ')' : ']');
    } else if (c == '[' || !settings.macros) {  // with macros "(" begins an expression
      invalid_option();
    }
  }
  if (skip_blanks_peek() == '*' || skip_blanks_peek() == '=') invalid_option();
  read_tree_list(request);
  read_excluded(request);
  require_end();
  return request;
}

tree_selection selection_of(const consensus_request& request) {
  tree_selection selection = select_stored_trees(request.trees, request.excluded);
  if (std::ranges::count(taxa_left_out(selection), 0) == 0)
    error_end("Cannot exclude all taxa of the trees");
  return selection;
}

int per_cent(int count, int n) { return static_cast<int>(count * 100LL / n); }

/// Texts of the nodes that have a value, as percentages of `n` trees.
std::vector<std::string> value_texts(std::span<const int> values, int none, int n) {
  std::vector<std::string> texts(values.size());
  for (std::size_t i = 0; i < values.size(); ++i)
    if (values[i] != none) texts[i] = std::to_string(per_cent(values[i], n));
  return texts;
}

/// Shows the result, and stores it where that was asked for.
void deliver(const consensus_request& request, const group_tree& result, const std::string& title,
             bool with_values, std::string_view group_name,
             std::string_view no_space = "No space to store new trees") {
  std::vector<std::string> texts;
  if (with_values) texts = value_texts(result.values, -1, request.n_trees);
  draw_tree(result.tree, title, texts);
  if (!request.store) return;
  const tree_span slot = store_slot(group_name, true, no_space);
  std::copy(result.tree.begin(), result.tree.end(), slot.begin());
  if (settings.report) report_line("Consensus stored as tree", store.ntrees - 1);
}

/// The "[J]" and "(J)" forms.
void show_values(const consensus_request& request, std::span<const int> values, int none,
                 const char* title, const char* table_title) {
  const std::string heading = text_of(title, request.reference, request.n_trees);
  if (!request.as_table) {
    draw_tree(stored_tree(request.reference), heading, value_texts(values, none, request.n_trees));
    return;
  }
  emit(heading, "\n");
  emit("Frequency list\n");
  std::vector<std::int64_t> cells(at(node_limit(stored_tree(request.reference), matrix.ntax)),
                                  no_value);
  for (std::size_t n = 0; n < cells.size(); ++n)
    if (values[n] != none) cells[n] = per_cent(values[n], request.n_trees);
  print_table(text_of(table_title, request.reference), cells);
}

/// "=N". True if that was the form.
bool set_cut(int consensus_settings::*cut, int lowest, const char* refusal, const char* name) {
  if (!accept_char('=')) return false;
  no_timing();
  const int value = read_int();
  if (value < lowest || value > 100) error_end(refusal);
  require_end();
  consensus.*cut = value;
  if (settings.report) report_line("Cut for", name, "is", value);
  return true;
}

}  // namespace

std::vector<double> requested_frequencies(bool differences) {
  const consensus_request request = read_request(true);
  if (request.store) invalid_option();
  const tree_selection selection = selection_of(request);
  std::vector<int> counts;
  const_tree_span tree;
  group_tree result;
  if (request.reference >= 0) {
    tree = stored_tree(request.reference);
    counts = differences ? group_differences(selection, tree) : group_frequencies(selection, tree);
  } else {
    result = differences ? difference_consensus(selection, consensus.freqdif_cut)
                         : majority_consensus(selection, consensus.majority_cut);
    tree = result.tree;
    counts = result.values;
  }
  const int none = differences && request.reference >= 0 ? no_group : -1;
  std::vector<double> values(at(node_limit(tree, matrix.ntax)), 100);
  for (std::size_t n = 0; n < values.size(); ++n)
    if (counts[n] != none) values[n] = counts[n] * 100.0 / request.n_trees;
  return values;
}

void nelsen_command() {
  const int c = skip_blanks_peek();
  if (c == '<' || c == '>') {
    next_nonblank();
    no_timing();
    require_end();
    consensus.low_memory_always = c == '<';
    report_line("Using low-memory consensus algorithms",
                c == '<' ? "always" : "only when memory is low");
    return;
  }
  const consensus_request request = read_request(false);
  std::string title = text_of("Strict consensus of %i trees", request.n_trees);
  if (request.n_excluded > 0) title += text_of(" (%i taxa excluded)", request.n_excluded);
  deliver(request, strict_consensus(selection_of(request)), title, false, "Strict_consensus");
}

void majority_command() {
  if (set_cut(&consensus_settings::majority_cut, 50, "Cutoff must be 50-100", "majority rule"))
    return;
  const consensus_request request = read_request(true);
  if (request.reference >= 0) {
    const std::vector<int> counts =
        group_frequencies(selection_of(request), stored_tree(request.reference));
    return show_values(request, counts, -1, "Frequency of groups from tree %i, in %i trees",
                       "Frequency values (node numbers refer to tree %i)");
  }
  const int cut = consensus.majority_cut;
  if (cut < 50) error_end("Cannot do majority rule with cut < 50");
  deliver(request, majority_consensus(selection_of(request), cut),
          text_of("Majority rule tree (from %i trees, cut %i)", request.n_trees, cut), true,
          "Majority_rule_consensus");
}

void freqdifs_command() {
  if (set_cut(&consensus_settings::freqdif_cut, 0, "Cutoff must be 0-100", "frequency differences"))
    return;
  const consensus_request request = read_request(true);
  if (request.reference >= 0) {
    const std::vector<int> differences =
        group_differences(selection_of(request), stored_tree(request.reference));
    return show_values(request, differences, no_group,
                       "Frequency differences of groups from tree %i, in %i trees",
                       "Values (node numbers refer to tree %i)");
  }
  const int cut = consensus.freqdif_cut;
  deliver(request, difference_consensus(selection_of(request), cut),
          text_of("Frequency differences (from %i trees, cut %i)", request.n_trees, cut), true,
          "Freq_diff_consensus");
}

void comcomp_command() {
  const consensus_request request = read_request(false);
  const tree_selection selection = selection_of(request);
  std::string title = text_of("Combinable component consensus (from %i trees)", request.n_trees);
  if (some_trees_lack_taxa(selection)) title += " (some trees lack some taxa)";
  deliver(request, component_consensus(selection), title, true, "Combinable_Component_Consensus",
          "No space to store new trees (increase maxtrees)");
}

}  // namespace zeb
