// Trees in Newick notation, a tree after the other.
#pragma once

#include <string>
#include <vector>

#include "base/input_file.h"
#include "base/output_file.h"
#include "formats/written_words.h"
#include "trees/branch_labels.h"

namespace zeb {

/// Reads the trees of a file; labels and lengths of the last one that has any become the tags.
void read_newick_file(input_file& file);

/// The tree in nested parentheses with the names of its taxa as `words` has them, without the
/// closing ";". `labels`, by node, may be empty; each follows its node, where other programs look
/// for what belongs to the branch below it. A length that is no number is left out. In plain form
/// the label of a branch that has the root within it stands at both its ends: programs that reroot
/// the tree keep one of them.
std::string newick_text(const_tree_span tree, std::vector<branch_label> labels, word_writer& words);
/// All trees in memory, one a line, with the labels and lengths that they have, and the tag tree
/// after them where `with_tags`.
void write_newick_trees(output_file& out, bool with_tags, word_writer& words);

}  // namespace zeb
