// `pruntax`, `reroot`, `edit`: trees changed where they stand.
#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "trees/branch_labels.h"
#include "trees/commands.h"
#include "trees/drawing/display.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"
#include "trees/tree_undo.h"
#include "trees/tree_walks.h"

namespace zeb {

namespace {

int count_chosen(const std::vector<std::uint8_t>& chosen) {
  return static_cast<int>(std::count(chosen.begin(), chosen.end(), 1));
}

bool leaves_terminals(const_tree_span tree, const std::vector<std::uint8_t>& flags) {
  for (int t = 0; t < matrix.ntax; ++t) {
    if (!is_absent(tree, t) && !flags[at(t)]) return true;
  }
  return false;
}

/// A tree being edited; the numbers of its nodes are those of the tree as it stands.
struct edited_tree {
  tree_span tree{};
  int number = 0;  // in the buffer
};

int read_node(const edited_tree& edited) {
  const int node = read_int();
  if (node < 0) error_end("Must give", "node", "number");
  if (node >= node_limit(edited.tree, matrix.ntax) ||
      (node < matrix.ntax && is_absent(edited.tree, node))) {
    error_end("No node", node, "in tree", edited.number);
  }
  return node;
}

void remove_clade(tree_span tree, int node) {
  std::vector<std::uint8_t> flags(at(matrix.ntax), 0);
  flag_terminals(tree, matrix.ntax, node, flags);
  delete_taxa(tree, matrix.ntax, flags);
}

/// The node goes and its descendants hang on its ancestor.
void collapse_node(tree_span tree, int node) {
  if (node <= matrix.ntax) error_end("Only internal nodes above the root can be collapsed");
  const int below = tree[at(node)];
  for (int v = 0; v < node_limit(tree, matrix.ntax); ++v) {
    if (v != matrix.ntax && tree[at(v)] == node) tree[at(v)] = below;
  }
  remove_redundant_nodes(tree, matrix.ntax);
}

void move_to(edited_tree& edited, bool join) {
  const tree_span tree = edited.tree;
  const int node = read_node(edited);
  const int target = read_node(edited);
  if (join && target < matrix.ntax) error_end("Node", target, "is a terminal");
  if (!join && target == matrix.ntax && tree[at(node)] == matrix.ntax &&
      descendants_of(tree, matrix.ntax).count[at(matrix.ntax)] == 2) {
    return;  // it already is the sister of all others
  }
  if (!move_clade(tree, matrix.ntax, node, target, join)) {
    error_end("Node", node, "can't be moved to node", target);
  }
}

void read_move(edited_tree& edited) { move_to(edited, false); }
void read_join(edited_tree& edited) { move_to(edited, true); }
void read_remove(edited_tree& edited) { remove_clade(edited.tree, read_node(edited)); }
void read_root(edited_tree& edited) {
  reroot_on_branch(edited.tree, matrix.ntax, read_node(edited));
}
void read_collapse(edited_tree& edited) { collapse_node(edited.tree, read_node(edited)); }

constexpr command_options rows = {
    form<read_move>("move").argument("N M").help("clade N becomes the sister of node M"),
    form<read_join>("join").argument("N M").help(
        "clade N becomes one more descendant of internal node M"),
    form<read_remove>("remove").argument("N").help("the taxa of clade N are removed"),
    form<read_root>("root").argument("N").help("the root comes on the branch of node N"),
    form<read_collapse>("collapse")
        .argument("N")
        .help("internal node N goes: its descendants hang on its ancestor"),
};

void show_with_numbers(int number) {
  const const_tree_span tree = stored_tree(number);
  std::vector<std::string> texts(tree.size());
  for (int v = matrix.ntax; v < node_limit(tree, matrix.ntax); ++v) {
    texts[at(v)] = std::to_string(v);
  }
  draw_tree(tree, "Tree " + std::to_string(number) + ":", texts);
}

}  // namespace

constexpr option_table edit_options =
    rows.table("edit", {.unknown = "Unrecognized option for \"edit\": %s",
                        .no_word = "Expected an option for \"edit\""});

void pruntax_command() {
  const std::vector<std::uint8_t> chosen = read_tree_list();
  if (!accept_char('/')) error_end("Must give taxa to remove, as \"pruntax trees/taxa\"");
  std::vector<std::uint8_t> flags(at(matrix.ntax), 0);
  if (!read_list(list_plain, 0, matrix.ntax, "taxon", flags)) {
    error_end("Must give taxa to remove, as \"pruntax trees/taxa\"");
  }
  check_end();
  for (int t = 0; t < store.ntrees; ++t) {
    if (chosen[at(t)] && !leaves_terminals(stored_tree(t), flags)) {
      error_end("Cannot delete all terminals from a tree");
    }
  }
  tree_undo undo(chosen);
  for (int t = 0; t < store.ntrees; ++t) {
    if (chosen[at(t)]) delete_taxa(stored_tree(t), matrix.ntax, flags);
  }
  undo.keep();
  report_line(count_chosen(flags), "taxa removed from", count_chosen(chosen), "trees");
}

void reroot_command() {
  const std::vector<std::uint8_t> chosen = read_tree_list();
  check_end();
  int changed = 0;
  int without = 0;
  tree_undo undo(chosen);
  for (int t = 0; t < store.ntrees; ++t) {
    if (!chosen[at(t)]) continue;
    if (is_absent(stored_tree(t), matrix.outgroup)) {
      ++without;
      continue;
    }
    const labels_in_change labels(t);
    reroot_tree(stored_tree(t), matrix.ntax, matrix.outgroup);
    labels.put_back();
    ++changed;
  }
  undo.keep();
  report_line(changed, "trees rooted on", taxon_label(matrix.outgroup));
  if (without > 0) {
    report_line(without, "trees left as they were: they don't include",
                taxon_label(matrix.outgroup));
  }
}

void edit_command() {
  require_trees();
  const int number = read_int();
  if (number < 0) error_end("Must give", "tree", "number");
  check_tree_number(number);
  // Built aside and copied back at the end, so that a step that fails takes back those before it.
  std::vector<tree_node> tree(stored_tree(number).begin(), stored_tree(number).end());
  edited_tree edited{tree, number};
  while (skip_blanks_peek() != ';') read_option(edited, edit_options);
  std::vector<std::uint8_t> flags(at(store.ntrees), 0);
  flags[at(number)] = 1;
  tree_undo undo(flags);
  const labels_in_change labels(number);
  std::ranges::copy(tree, stored_tree(number).begin());
  labels.put_back();
  undo.keep();
  show_with_numbers(number);
}

}  // namespace zeb
