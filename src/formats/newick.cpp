#include "formats/newick.h"

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/progress.h"
#include "formats/labelled_trees.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {

void read_newick_file(input_file& file) {
  require_data("reading Newick trees");
  const std::string name = file.name();
  push_opened_file(std::move(file), {});
  const int level = input.top;
  taxon_names names;
  labelled_tree_reader reader(
      [&names](const std::string& label, const labelled_tree_reader& trees) {
        const int taxon = find_foreign_taxon(label, names);
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

std::string newick_text(const_tree_span tree, const node_text& after_node) {
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  const auto finish_node = [&](std::string& text, int node) {
    if (after_node) text += after_node(node);
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
      text += quoted_label(taxon_name(v));
      finish_node(text, v);
      v = lists.sibling[at(v)];
    } else {
      text += '(';
      open = v;
      v = lists.first[at(v)];
    }
  }
}

void write_newick_trees(output_file& out) {
  for (int i = 0; i < store.ntrees; ++i) out.print("%s;\n", newick_text(stored_tree(i)).c_str());
}

}  // namespace zeb
