#include "consensus/requests.h"

#include <algorithm>

#include "base/command.h"
#include "base/errors.h"
#include "base/indices.h"
#include "consensus/conflict_consensus.h"
#include "consensus/majority_consensus.h"
#include "language/hooks.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

int count_flags(std::span<const std::uint8_t> flags) {
  return static_cast<int>(std::count(flags.begin(), flags.end(), 1));
}

/// "J]" or "J)", from after the opening bracket.
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
  constexpr unsigned flags = list_slash_ends | list_in_tree_buffer;
  if (!read_list(flags, 0, store.ntrees, "tree", request.trees))
    std::fill(request.trees.begin(), request.trees.end(), std::uint8_t{1});
  request.n_trees = count_flags(request.trees);
  if (request.n_trees == 0) error_end("No trees specified");
  if (request.reference < 0 || !request.trees[at(request.reference)]) return;
  request.trees[at(request.reference)] = 0;
  if (--request.n_trees == 0) error_end("Can't compare tree with itself");
}

void read_excluded(consensus_request& request) {
  request.excluded.assign(at(matrix.ntax), 0);
  if (accept_char('/')) read_list(list_plain, 0, matrix.ntax, "taxon", request.excluded);
  request.n_excluded = count_flags(request.excluded);
  if (request.n_excluded == matrix.ntax) error_end("Cannot delete all terminals from a tree");
}

}  // namespace

[[noreturn]] void invalid_option() { error_end("Invalid option for", command.command_name); }

void require_end() {
  if (skip_blanks_peek() != ';') invalid_option();
}

bool read_reference(consensus_request& request) {
  const int c = skip_blanks_peek();
  if (c != '[' && c != '(') return false;
  next_nonblank();
  request.as_table = c == '(';
  request.reference = read_reference_tree(c == '(' ? ')' : ']');
  return true;
}

consensus_request read_consensus_request(bool has_reference_forms) {
  consensus_request request;
  if (store.ntrees == 0) error_end("No trees specified");
  if (accept_char('*')) request.store = true;
  const int c = skip_blanks_peek();
  if (c == '[' || c == '(') {
    if (has_reference_forms && !request.store) {
      read_reference(request);
    } else if (c == '[' || !macros_on()) {  // with macros "(" begins an expression
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

std::vector<double> requested_frequencies(bool differences) {
  const consensus_request request = read_consensus_request(true);
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

}  // namespace zeb
