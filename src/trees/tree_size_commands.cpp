// `tnodes`, `tsize`, `incltax`, `unshared`: what the trees in memory hold.
#include <algorithm>
#include <string>
#include <vector>

#include "base/indices.h"
#include "console/output.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/drawing/tables.h"
#include "trees/drawing/text_lines.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

/// One value for each listed tree, as a table.
template <class measure>
void print_by_tree(std::string_view title, measure value_of) {
  const std::vector<std::uint8_t> chosen = read_tree_list();
  check_end();
  std::vector<std::int64_t> values(chosen.size(), no_value);
  for (int t = 0; t < store.ntrees; ++t) {
    if (chosen[at(t)]) values[at(t)] = value_of(stored_tree(t));
  }
  print_table(title, values);
}

/// In how many of the listed trees each taxon is.
struct inclusion {
  std::vector<int> trees_with;  // by taxon
  int trees = 0;
};

inclusion read_inclusion() {
  const std::vector<std::uint8_t> chosen = read_tree_list();
  check_end();
  inclusion result{std::vector<int>(at(matrix.ntax), 0)};
  for (int t = 0; t < store.ntrees; ++t) {
    if (!chosen[at(t)]) continue;
    ++result.trees;
    const const_tree_span tree = stored_tree(t);
    for (int taxon = 0; taxon < matrix.ntax; ++taxon) {
      if (!is_absent(tree, taxon)) ++result.trees_with[at(taxon)];
    }
  }
  return result;
}

template <class predicate>
void print_taxa(const inclusion& found, const char* what, predicate wanted) {
  const auto count = std::count_if(found.trees_with.begin(), found.trees_with.end(), wanted);
  report_line(count, what, std::to_string(found.trees) + " tree(s):");
  std::string taxa;
  for (int taxon = 0; taxon < matrix.ntax; ++taxon) {
    if (wanted(found.trees_with[at(taxon)])) taxa += taxon_label(taxon) + " ";
  }
  emit_broken_at_blanks(taxa);
}

}  // namespace

void tnodes_command() {
  print_by_tree("Number of nodes",
                [](const_tree_span tree) { return node_limit(tree, matrix.ntax) - matrix.ntax; });
}

void tsize_command() {
  print_by_tree("Number of taxa",
                [](const_tree_span tree) { return terminals_in(tree, matrix.ntax); });
}

void incltax_command() {
  const inclusion found = read_inclusion();
  print_taxa(found, "taxa included in", [](int trees) { return trees > 0; });
}

void unshared_command() {
  const inclusion found = read_inclusion();
  print_taxa(found, "taxa not shared by", [&](int trees) { return trees < found.trees; });
}

}  // namespace zeb
