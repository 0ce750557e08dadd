#include "trees/notation/parenthetical_writer.h"

#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/notation/taxon_names.h"
#include "trees/tree_walks.h"

namespace zeb {

std::string parenthetical_text(const_tree_span tree, int ntax,
                               const std::function<std::string(int)>& label,
                               const std::function<std::string(int)>& tag) {
  const descendant_lists lists = descendants_of(tree, ntax);
  const auto append_tag = [&](std::string& text, int node, bool blank) {
    const std::string tag_text = tag ? tag(node) : std::string();
    if (!tag_text.empty()) text.append("=").append(tag_text);
    if (blank || !tag_text.empty()) text += ' ';
  };
  std::string text = "(";
  int v = lists.first[at(ntax)];
  int open = ntax;
  while (true) {
    if (v < 0) {
      // All descendants of `open` are out.
      text += ')';
      append_tag(text, open, false);
      if (open == ntax) return text;
      v = lists.sibling[at(open)];
      open = tree[at(open)];
    } else if (v < ntax) {
      text += label(v);
      append_tag(text, v, true);
      v = lists.sibling[at(v)];
    } else {
      text += '(';
      open = v;
      v = lists.first[at(v)];
    }
  }
}

std::string stored_tree_text(const_tree_span tree) {
  taxon_names names;
  return parenthetical_text(tree, matrix.ntax, [&](int t) { return tree_label(t, names); });
}

}  // namespace zeb
