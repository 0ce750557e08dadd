#include "formats/nexus/trees_writer.h"

#include <cctype>
#include <cstdlib>
#include <functional>
#include <string>

#include "base/errors.h"
#include "base/indices.h"
#include "formats/labelled_trees.h"
#include "matrix/matrix.h"
#include "trees/drawing/tags.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

// Text behind a node: its label, or ":" and its length.
using node_text = std::function<std::string(int node)>;

std::string newick_text(const_tree_span tree, const node_text& behind = {}) {
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  const auto finish_node = [&](std::string& text, int node) {
    if (behind) text += behind(node);
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

bool is_number(const std::string& text) {
  if (text.empty() || std::isspace(static_cast<unsigned char>(text[0]))) return false;
  char* end = nullptr;
  std::strtod(text.c_str(), &end);
  return *end == '\0';
}

// A tag as a label, a length, or both: "0.9/0.05" is what a label and a length are read into.
class tag_texts {
 public:
  explicit tag_texts(tag_use use) : use_(use) {}
  std::string behind(int node) {
    const std::string& tag = tags.tag_texts[at(node)];
    if (tag.empty()) return {};
    const bool terminal = node < matrix.ntax;
    if (use_ == tag_use::labels) return terminal ? lost(node, tag) : quoted_label(tag);
    if (is_number(tag)) return ":" + tag;
    const std::size_t slash = tag.rfind('/');
    if (terminal || slash == std::string::npos || !is_number(tag.substr(slash + 1)))
      return lost(node, tag);
    return quoted_label(tag.substr(0, slash)) + ":" + tag.substr(slash + 1);
  }
  void warn_of_lost() const {
    if (lost_ == 0) return;
    warning(lost_, lost_ == 1 ? "tag" : "tags",
            use_ == tag_use::labels ? "of terminals can't be written as labels:"
                                    : "can't be written as branch lengths:",
            first_lost_);
  }

 private:
  std::string lost(int node, const std::string& tag) {
    if (lost_++ == 0) first_lost_ = "\"" + tag + "\" of node " + std::to_string(node);
    return {};
  }

  tag_use use_;
  int lost_ = 0;
  std::string first_lost_;
};

const char* begin_trees(bool plain) { return plain ? "\nbegin trees;\n" : "\nbegin trees ; \n"; }
const char* end_trees(bool plain) { return plain ? "end;\n" : "end ;\n"; }

}  // namespace

void write_newick_trees(std::FILE* out) {
  for (int i = 0; i < store.ntrees; ++i)
    std::fprintf(out, "%s;\n", newick_text(stored_tree(i)).c_str());
}

void write_nexus_trees(std::FILE* out, bool plain) {
  std::fputs(begin_trees(plain), out);
  for (int i = 0; i < store.ntrees; ++i)
    std::fprintf(out, "tree zeb_%i = [&R] %s;\n", i, newick_text(stored_tree(i)).c_str());
  std::fputs(end_trees(plain), out);
}

void write_nexus_tag_tree(std::FILE* out, tag_use use, bool plain) {
  tag_texts texts(use);
  const std::string tree =
      newick_text(tags.tag_tree, [&texts](int node) { return texts.behind(node); });
  std::fprintf(out, "%stree %s = [&R] %s%s;\n%s", begin_trees(plain), tag_tree_name.data(),
               plain ? "" : "\n", tree.c_str(), end_trees(plain));
  texts.warn_of_lost();
}

}  // namespace zeb
