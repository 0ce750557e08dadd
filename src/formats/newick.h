// Trees in Newick notation, a tree after the other.
#pragma once

#include <functional>
#include <string>

#include "base/input_file.h"
#include "base/output_file.h"
#include "trees/tree_record.h"

namespace zeb {

/// Reads the trees of a file; labels and lengths of the last one that has any become the tags.
void read_newick_file(input_file& file);

/// What follows a node: its label, or ":" and its length, or both.
using node_text = std::function<std::string(int node)>;
/// The tree in nested parentheses with the names of its taxa, without the closing ";".
std::string newick_text(const_tree_span tree, const node_text& after_node = {});
/// All trees in memory, one a line.
void write_newick_trees(output_file& out);

}  // namespace zeb
