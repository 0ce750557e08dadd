// nelsen, majority, freqdifs and comcomp: what each makes of its arguments.
#include <algorithm>
#include <optional>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "consensus/commands.h"
#include "consensus/conflict_consensus.h"
#include "consensus/majority_consensus.h"
#include "consensus/requests.h"
#include "consensus/strict_consensus.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/branch_labels.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/drawing/tags.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"
#include "trees/tree_undo.h"

namespace zeb {

consensus_settings consensus;

namespace {

int per_cent(int count, int n) { return static_cast<int>(count * 100LL / n); }

/// Texts of the nodes that have a value, as percentages of `n` trees.
std::vector<std::string> value_texts(std::span<const int> values, int none, int n) {
  std::vector<std::string> texts(values.size());
  for (std::size_t i = 0; i < values.size(); ++i)
    if (values[i] != none) texts[i] = std::to_string(per_cent(values[i], n));
  return texts;
}

/// What had no room may contradict the groups of a consensus.
void tell_full_buffer() {
  if (!store.cut_short) return;
  emit(
      "Note: the search filled the memory for trees (see \"hold\"): others as good may be "
      "missing.\n");
}

/// Rounded, where the percentages that are shown are cut.
std::vector<branch_label> values_as_labels(std::span<const int> values, int n_trees) {
  std::vector<branch_label> labels(values.size());
  for (std::size_t i = 0; i < values.size(); ++i)
    if (values[i] >= 0)
      labels[i].label = std::to_string((200LL * values[i] + n_trees) / (2 * n_trees));
  return labels;
}

/// Shows the result, and stores it where that was asked for.
void deliver(const consensus_request& request, const group_tree& result, const std::string& title,
             bool with_values, std::string_view group_name,
             std::string_view no_space = "No space to store new trees") {
  std::vector<std::string> texts;
  if (with_values) texts = value_texts(result.values, -1, request.n_trees);
  const bool had_tags = has_any_tag() && tags.source == tag_source::hand;
  draw_tree(result.tree, title, texts);
  tell_full_buffer();
  if (!request.store) return;
  tree_undo undo({});
  const tree_span slot = take_slot(true, no_space);
  std::copy(result.tree.begin(), result.tree.end(), slot.begin());
  group_automatically(store.ntrees - 1, store.ntrees, group_name);
  if (with_values) {
    label_tree(store.ntrees - 1, values_as_labels(result.values, request.n_trees));
    if (!had_tags) set_tag_tree_to_stored(store.ntrees - 1, tag_source::computed, title);
  }
  undo.keep();
  if (settings.report) report_line("Consensus stored as tree", store.ntrees - 1);
}

/// The "[J]" and "(J)" forms.
void show_values(const consensus_request& request, std::span<const int> values, int none,
                 const char* title, const char* table_title) {
  const std::string heading = text_of(title, request.reference, request.n_trees);
  if (!request.as_table) {
    draw_tree(stored_tree(request.reference), heading, value_texts(values, none, request.n_trees));
    return tell_full_buffer();
  }
  emit(heading, "\n");
  emit("Frequency list\n");
  std::vector<std::int64_t> cells(at(node_limit(stored_tree(request.reference), matrix.ntax)),
                                  no_value);
  for (std::size_t n = 0; n < cells.size(); ++n)
    if (values[n] != none) cells[n] = per_cent(values[n], request.n_trees);
  print_table(text_of(table_title, request.reference), cells);
  tell_full_buffer();
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
  const consensus_request request = read_consensus_request(false);
  std::string title = text_of("Strict consensus of %i trees", request.n_trees);
  if (request.n_excluded > 0) title += text_of(" (%i taxa excluded)", request.n_excluded);
  deliver(request, strict_consensus(selection_of(request)), title, false, "Strict_consensus");
}

void majority_command() {
  if (set_cut(&consensus_settings::majority_cut, 50, "Cutoff must be 50-100", "majority rule"))
    return;
  const consensus_request request = read_consensus_request(true);
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
  const consensus_request request = read_consensus_request(true);
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
  const consensus_request request = read_consensus_request(false);
  const tree_selection selection = selection_of(request);
  std::string title = text_of("Combinable component consensus (from %i trees)", request.n_trees);
  if (some_trees_lack_taxa(selection)) title += " (some trees lack some taxa)";
  deliver(request, component_consensus(selection), title, true, "Combinable_Component_Consensus",
          "No space to store new trees (increase maxtrees)");
}

}  // namespace zeb
