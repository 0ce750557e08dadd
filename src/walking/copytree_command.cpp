// `copytree`: a tree in memory, or one of those kept elsewhere, copied to a place in memory.
#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/macro_language.h"
#include "matrix/matrix.h"
#include "taxonomy/taxonomy.h"
#include "trees/constraints/constraints.h"
#include "trees/drawing/tags.h"
#include "trees/tree_slots.h"
#include "trees/tree_store.h"
#include "walking/commands.h"

namespace zeb {
namespace {

// Where a tree is copied from: the buffer, or what is kept beside it.
struct copied_tree {
  int number = -1;  // in the buffer
  std::vector<tree_node> tree;
  std::string what;     // as the report names it
  std::string missing;  // what to say where there is none
};

copied_tree read_source() {
  if (accept_char('*')) {
    return {-1, constraints.tree, "Constraint tree",
            "No constraint tree is defined; can't copy onto"};
  }
  if (accept_char('+')) {
    return {-1, tags.tags_present ? tags.tag_tree : std::vector<tree_node>(), "Tag-tree",
            "No tag-tree is defined; can't copy onto"};
  }
  if (accept_char('!')) {
    if (!taxonomy_in_use()) error_end("No taxonomy defined!");
    return {-1, read_taxonomy().tree(matrix.ntax), "Taxonomy tree", {}};
  }
  const int number = read_int();
  check_tree_number(number);
  const const_tree_span tree = stored_tree(number);
  return {number, {tree.begin(), tree.end()}, "Tree " + std::to_string(number), {}};
}

/// "[": the tags become the taxonomy; what has none isn't a group.
void move_tags_to_taxonomy() {
  check_end();
  if (!taxonomy_in_use()) error_end("No taxonomy defined!");
  if (!tags.tags_present) error_end("No tree-tag defined!");
  const int cut = names_from_labels(tags.tag_tree, tags.tag_texts);
  collapse_untagged_nodes();
  if (settings.report) report_line("Tags copied to taxonomy");
  if (cut > 0)
    warning_f("No space for all groups in the names of %s (see \"taxname\")",
              counted(cut, "taxon", "taxa").c_str());
}

}  // namespace

void copytree_command() {
  require_macros();
  require_data("copying trees");
  if (accept_char('[')) return move_tags_to_taxonomy();
  const copied_tree source = read_source();
  int target = store.ntrees;
  const bool given = read_optional_int(&target);
  check_end();
  if (given) check_tree_number(target);
  if (source.tree.empty()) error_end(source.missing, target);
  if (given && target == source.number) return;
  if (!given) take_slot(false, "Can't store more trees (tree buffer full)");
  std::ranges::copy(source.tree, stored_tree(target).begin());
  if (source.number >= 0) copy_labels(store, source.number, store, target);
  if (settings.report) report_line(source.what, "copied to tree", target);
}

}  // namespace zeb
