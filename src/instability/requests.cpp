#include "instability/requests.h"

#include <algorithm>
#include <cctype>

#include "base/errors.h"
#include "base/indices.h"
#include "consensus/conflict_consensus.h"
#include "consensus/majority_consensus.h"
#include "consensus/strict_consensus.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/tree_store.h"

namespace zeb {

consensus_method method_of(consensus_kind kind) {
  switch (kind) {
    case consensus_kind::majority:
      return [](const tree_selection& s) { return majority_consensus(s, consensus.majority_cut); };
    case consensus_kind::differences:
      return [](const tree_selection& s) { return difference_consensus(s, consensus.freqdif_cut); };
    case consensus_kind::components:
      return component_consensus;
    default:
      return strict_consensus;
  }
}

std::string name_of(consensus_kind kind) {
  switch (kind) {
    case consensus_kind::majority:
      return "Majority rule tree";
    case consensus_kind::differences:
      return "Frequency difference tree";
    case consensus_kind::components:
      return "Combinable component consensus";
    default:
      return "Strict consensus";
  }
}

bool option_comes_next() {
  const int c = skip_blanks_peek();
  return std::isalpha(c) || c == '=' || c == '*' || c == '[';
}

tree_selection read_selection(const char* doing) {
  require_data(doing);
  if (store.ntrees == 0) error_end("No trees specified");
  std::vector<std::uint8_t> trees(at(store.ntrees), 0);
  constexpr unsigned flags = list_slash_ends | list_in_tree_buffer;
  if (!read_list(flags, 0, store.ntrees, "tree", trees)) std::ranges::fill(trees, std::uint8_t{1});
  if (std::ranges::count(trees, 1) == 0) error_end("No trees specified");
  return select_stored_trees(trees);
}

tree_selection read_selection_and_excluded(const char* doing) {
  tree_selection selection = read_selection(doing);
  selection.excluded.assign(at(matrix.ntax), 0);
  if (accept_char('/')) read_list(list_plain, 0, matrix.ntax, "taxon", selection.excluded);
  if (std::ranges::count(taxa_left_out(selection), 0) == 0)
    error_end("Cannot exclude all taxa of the trees");
  return selection;
}

std::vector<int> read_candidates(const tree_selection& selection) {
  std::vector<std::uint8_t> wanted(at(matrix.ntax), 1);
  wanted[at(matrix.outgroup)] = 0;
  if (accept_char('/')) {
    std::ranges::fill(wanted, std::uint8_t{0});
    if (!read_list(list_plain, 0, matrix.ntax, "taxon", wanted)) error_end("No taxa to prune");
  }
  const std::vector<std::uint8_t> absent = taxa_left_out(selection);
  std::vector<int> candidates;
  for (int t = 0; t < matrix.ntax; ++t)
    if (wanted[at(t)] && !absent[at(t)]) candidates.push_back(t);
  return candidates;
}

std::string taxa_after(const std::string& head, const taxon_set& taxa) {
  std::vector<std::string> labels;
  for (const int t : taxa) labels.push_back(taxon_label(t));
  return head + wrapped_words(labels, head.size()) + "\n";
}

void deliver_consensus(const group_tree& result, const std::string& title, bool store_it) {
  draw_tree(result.tree, title, {});
  if (!store_it) return;
  std::ranges::copy(result.tree, take_slot(true).begin());
  if (settings.report) report_line("Consensus stored as tree", store.ntrees - 1);
}

}  // namespace zeb
