#include "formats/nexus/trees_writer.h"

#include <cctype>
#include <cmath>
#include <string>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "formats/labelled_trees.h"
#include "formats/newick.h"
#include "matrix/matrix.h"
#include "trees/drawing/tags.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

bool is_number(const std::string& text) { return std::isfinite(real_of(text).value_or(INFINITY)); }

// A tag as a label, a length, or both: "0.9/0.05" is what a label and a length are read into.
class tag_texts {
 public:
  explicit tag_texts(tag_use use) : use_(use) {
    if (use_ != tag_use::both) return;
    for (int t = 0; t < matrix.ntax; ++t)
      terminals_have_numbers_ |= is_number(tags.tag_texts[at(t)]);
  }
  std::string after_node(int node) {
    const std::string& tag = tags.tag_texts[at(node)];
    if (tag.empty()) return {};
    const bool terminal = node < matrix.ntax;
    if (use_ == tag_use::labels) return terminal ? lost(node, tag) : quoted_label(tag);
    const bool is_length = use_ == tag_use::lengths || terminals_have_numbers_;
    if (is_length && is_number(tag)) return ":" + tag;
    const std::size_t slash = tag.rfind('/');
    if (terminal || slash == std::string::npos || !is_number(tag.substr(slash + 1)))
      return use_ == tag_use::both && !terminal ? quoted_label(tag) : lost(node, tag);
    return quoted_label(tag.substr(0, slash)) + ":" + tag.substr(slash + 1);
  }
  void warn_of_lost() const {
    if (lost_ == 0) return;
    warning(counted(lost_, "tag", "tags"),
            use_ == tag_use::lengths ? "can't be written as branch lengths:"
                                     : "of terminals can't be written as labels:",
            first_lost_);
  }

 private:
  std::string lost(int node, const std::string& tag) {
    if (lost_++ == 0) first_lost_ = "\"" + tag + "\" of node " + std::to_string(node);
    return {};
  }

  tag_use use_;
  bool terminals_have_numbers_ = false;
  int lost_ = 0;
  std::string first_lost_;
};

const char* begin_trees(bool plain) { return plain ? "\nbegin trees;\n" : "\nbegin trees ; \n"; }
const char* end_trees(bool plain) { return plain ? "end;\n" : "end ;\n"; }

void write_tag_tree(output_file& out, tag_use use, bool plain) {
  tag_texts texts(use);
  const std::string tree =
      newick_text(tags.tag_tree, [&texts](int node) { return texts.after_node(node); });
  out.print("tree %s = [&R] %s%s;\n", tag_tree_name.data(), plain ? "" : "\n", tree.c_str());
  texts.warn_of_lost();
}

}  // namespace

void write_nexus_trees(output_file& out, bool plain, bool with_tags) {
  out.put(begin_trees(plain));
  for (int i = 0; i < store.ntrees; ++i)
    out.print("tree zeb_%i = [&R] %s;\n", i, newick_text(stored_tree(i)).c_str());
  if (with_tags) write_tag_tree(out, tag_use::both, plain);
  out.put(end_trees(plain));
}

void write_nexus_tag_tree(output_file& out, tag_use use, bool plain) {
  out.put(begin_trees(plain));
  write_tag_tree(out, use, plain);
  out.put(end_trees(plain));
}

}  // namespace zeb
