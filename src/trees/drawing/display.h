// Settings of the tree diagrams, and the texts that go on their branches.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "trees/tree_record.h"

namespace zeb {

/// How trees are drawn. Written by `tplot`, `naked` and `lintrees`.
struct display_state {
  bool draw_symmetric = false;        // `tplot +`: a branch leaves midway between its descendants
  bool second_largest_first = false;  // `tplot ++`: order of the clades of a polytomy
  bool naked = true;                  // off: internal nodes carry their numbers
  bool roomy = false;                 // `naked [`: an empty line between terminals
  bool code_page_lines = false;       // `lintrees -`: line characters of code page 437
};
extern display_state display;

/// Heading of stored tree `number`: "Tree N:", with a note for the last one.
std::string tree_heading(int number);
/// Prints the diagram of a tree with `node_texts` (by node; may be empty) on the branches, and
/// stores tags when `ttags =` is on. `title` is printed above, and becomes the tag title.
void draw_tree(const_tree_span tree, std::string_view title,
               std::span<const std::string> node_texts);
/// Draws a stored tree as `tplot` does: with node numbers unless `naked`.
void plot_stored_tree(int number);
/// The diagram of a tree, without title and without storing tags. With `lines_of_tags`, a backslash
/// separates the lines of a text even while `ttags [` is off.
void print_diagram(const_tree_span tree, std::span<const std::string> node_texts,
                   bool lines_of_tags = false);

}  // namespace zeb
