#include "formats/newick.h"

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/progress.h"
#include "formats/labelled_trees.h"
#include "formats/labels_from_tags.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "matrix/matrix.h"
#include "trees/drawing/tags.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {

void read_newick_file(input_file& file) {
  require_data("reading Newick trees");
  const std::string name = file.name();
  push_opened_file(std::move(file), {});
  const int level = input.top;
  foreign_names names;
  labelled_tree_reader reader(
      [&names](const std::string& label, const labelled_tree_reader& trees) {
        const int taxon = names.find(label);
        if (taxon < 0) error_end("Unidentified taxon name:", label, trees.place());
        return taxon;
      });
  const int first = store.ntrees;
  while (input.top == level && !input_ended()) {
    if (!reader.read_tree() && input_ended()) break;
    show_progress("Reading trees", reader.trees_read(), store.maxtrees);
  }
  clear_progress();
  if (input.top == level) pop_frame();
  const int count = reader.trees_read();
  const bool tagged = reader.keep_tags("Tree-tags from " + name);
  std::string text = "Read " + counted(count, "tree", "trees") + " from Newick tree-file";
  if (count > 0) {
    text += text_of(" (%s %i", count == 1 ? "tree" : "trees", first);
    text += count == 1 ? ")" : text_of("-%i)", store.ntrees - 1);
  }
  report_line(text + (tagged ? " (stored tree-tags as well)" : ""));
}

namespace {

std::string text_after_node(int node, const branch_label& one, word_writer& words) {
  std::string text;
  if (node >= matrix.ntax && !one.label.empty()) text = words.word(one.label);
  if (is_number(one.length)) text += ":" + one.length;
  return text;
}

/// The two descendants of a root stand at the ends of one branch.
void label_both_sides_of_root(const descendant_lists& lists, std::vector<branch_label>& labels) {
  if (lists.count[at(matrix.ntax)] != 2) return;
  const int one = lists.first[at(matrix.ntax)];
  const int other = lists.sibling[at(one)];
  std::string& label = labels[at(one)].label;
  std::string& other_label = labels[at(other)].label;
  if (label.empty()) label = other_label;
  if (other_label.empty()) other_label = label;
}

}  // namespace

std::string newick_text(const_tree_span tree, std::vector<branch_label> labels,
                        word_writer& words) {
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  if (words.plain() && !labels.empty()) label_both_sides_of_root(lists, labels);
  const auto finish_node = [&](std::string& text, int node) {
    if (!labels.empty()) text += text_after_node(node, labels[at(node)], words);
    if (node != matrix.ntax && lists.sibling[at(node)] >= 0) text += ',';
  };
  std::string text = "(";
  int open = matrix.ntax;
  int v = lists.first[at(open)];
  while (true) {
    if (v < 0) {
      text += ')';
      finish_node(text, open);
      if (open == matrix.ntax) return text;
      v = lists.sibling[at(open)];
      open = tree[at(open)];
    } else if (v < matrix.ntax) {
      text += words.taxon(v);
      finish_node(text, v);
      v = lists.sibling[at(v)];
    } else {
      text += '(';
      open = v;
      v = lists.first[at(v)];
    }
  }
}

void write_newick_trees(output_file& out, bool with_tags, word_writer& words) {
  for (int i = 0; i < store.ntrees; ++i)
    out.print("%s;\n", newick_text(stored_tree(i), labels_of_tree(i), words).c_str());
  if (!with_tags) return;
  const std::vector<branch_label> labels = labels_from_tags(tag_use::both);
  out.print("%s;\n", newick_text(tags.tag_tree, labels, words).c_str());
}

}  // namespace zeb
