// Trees as text: one line a terminal, branches of plain characters, texts on the branches.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "trees/drawing/diagram_layout.h"

namespace zeb {

/// The lines of the diagram, without line ends. `labels` are the texts of the terminals, by taxon;
/// `node_texts`, by node, stand on the branches (may be empty or shorter than the tree). A diagram
/// wider than `columns` goes on in further passes: lines that are cut end in ">>>" and go on after
/// one.
std::vector<std::string> diagram_lines(const_tree_span tree, int ntax,
                                       std::span<const std::string> labels,
                                       std::span<const std::string> node_texts,
                                       const diagram_style& style);

}  // namespace zeb
