#include "formats/nexus/trees_block.h"

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/progress.h"
#include "formats/labelled_trees.h"
#include "formats/nexus/tree_taxa.h"
#include "language/interpreter.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

// From the end of "tree" to the tree's first parenthesis, which stays unread. Returns the name.
std::string read_tree_head(nexus_file& file) {
  file.in.accept('*');
  const nexus_token name = file.in.token();
  if (name.what != nexus_token::kind::word)
    error_end("Error reading NEXUS file: expected '=' after tree name");
  if (!file.in.accept('=')) error_end("Error reading NEXUS file: expected '=' after tree name");
  if (file.in.peek() != '(') file.in.fail("expected a tree in parentheses after tree name");
  return name.text;
}

}  // namespace

void read_trees_block(nexus_file& file) {
  require_data("reading trees");
  tree_taxa taxa(file);
  labelled_tree_reader reader(taxa.lookup(), refuse_repeated_taxon);
  const int first = store.ntrees;
  nexus_token word;
  while (file.in.command_follows(word)) {
    if (word.is("translate")) {
      taxa.read_translation(file);
    } else if (word.is("tree") || word.is("utree")) {
      // In a file of ours, the tree that has the tags follows the others and is no tree of its own.
      const bool for_tags_only = read_tree_head(file) == tag_tree_name && file.trees_read > 0;
      reader.read_tree(for_tags_only);
      file.trees_read += !for_tags_only;
      show_progress("Reading trees", reader.trees_read(), store.maxtrees);
    } else {
      file.skip_command(word);
    }
  }
  clear_progress();
  reader.keep_tags(text_of("Tree-tags from %s", file.name.c_str()));
  if (reader.trees_read() > 0) {
    emitf("Read %i trees (%i-%i) from NEXUS file", reader.trees_read(), first, store.ntrees - 1);
  }
}

}  // namespace zeb
