#include "formats/nexus/trees_writer.h"

#include <string>

#include "formats/labelled_trees.h"
#include "formats/newick.h"
#include "trees/drawing/tags.h"
#include "trees/tree_store.h"

namespace zeb {

void write_nexus_trees(output_file& out, const written_trees& what, word_writer& words) {
  out.put(what.plain ? "\nbegin trees;\n" : "\nbegin trees ; \n");
  for (int i = 0; what.stored && i < store.ntrees; ++i) {
    const std::string tree = newick_text(stored_tree(i), labels_of_tree(i), words);
    out.print("tree zeb_%i = [&R] %s;\n", i, tree.c_str());
  }
  if (what.tags) {
    const std::string tree = newick_text(tags.tag_tree, labels_from_tags(*what.tags), words);
    out.print("tree %s = [&R] %s%s;\n", tag_tree_name.data(), what.plain ? "" : "\n", tree.c_str());
  }
  out.put(what.plain ? "end;\n" : "end ;\n");
}

}  // namespace zeb
