#include "trees/drawing/display.h"

#include <algorithm>
#include <vector>

#include "base/indices.h"
#include "console/output.h"
#include "console/screen.h"
#include "matrix/matrix.h"
#include "trees/drawing/shrunken_tree.h"
#include "trees/drawing/tags.h"
#include "trees/drawing/text_diagram.h"
#include "trees/tree_store.h"

namespace zeb {

display_state display;

namespace {

constexpr line_characters plain_lines{'|', '|', '`', ',', '|', '-', '-', '+'};
constexpr line_characters code_page_437{'\xb3', '\xc3', '\xc0', '\xda',
                                        '\xb4', '\xc4', '\xc1', '\xc5'};

/// Widest line, so that it passes the line buffer whole: that of diagrams for no screen, which
/// nobody has to read in parts.
constexpr int widest_line = 2000;

diagram_style current_style(bool lines_of_tags) {
  diagram_style style;
  style.lines = display.code_page_lines ? code_page_437 : plain_lines;
  style.symmetric = display.draw_symmetric;
  style.roomy = display.roomy;
  style.second_largest_first = display.second_largest_first;
  style.outgroup = matrix.outgroup;
  style.columns = screen.cut_lines ? std::clamp(screen.columns - 1, 20, widest_line) : widest_line;
  style.separator = lines_of_tags ? '\\' : tags.tag_separator;
  style.text_width = tags.tag_width;
  return style;
}

std::vector<std::string> node_numbers(const_tree_span tree) {
  const int limit = node_limit(tree, matrix.ntax);
  std::vector<std::string> out(at(limit));
  for (int n = matrix.ntax; n < limit; ++n) out[at(n)] = std::to_string(n);
  return out;
}

}  // namespace

std::string tree_heading(int number) {
  const std::string start = "Tree " + std::to_string(number);
  return start + (number == store.ntrees - 1 ? " (last tree in memory):" : ":");
}

void print_diagram(const_tree_span tree, std::span<const std::string> node_texts,
                   bool lines_of_tags) {
  std::vector<std::string> labels(at(matrix.ntax));
  for (int t = 0; t < matrix.ntax; ++t)
    if (!is_absent(tree, t)) labels[at(t)] = taxon_label(t);
  std::vector<std::string> numbers;
  if (node_texts.empty() && !display.naked) node_texts = numbers = node_numbers(tree);
  shrunken_tree shrunken;
  if (shrinking.groups != 0) {
    shrunken = shrink_tree(tree, labels, node_texts);
    tree = shrunken.record;
    labels = shrunken.labels;
    node_texts = shrunken.node_texts;
  }
  const std::vector<std::string> lines =
      diagram_lines(tree, matrix.ntax, labels, node_texts, current_style(lines_of_tags));
  for (const std::string& line : lines) emit(line, "\n");
}

void draw_tree(const_tree_span tree, std::string_view title,
               std::span<const std::string> node_texts) {
  if (!title.empty()) emit(title, "\n");
  print_diagram(tree, node_texts);
  newline();
  if (tags.tags_on) store_drawn_tags(tree, title, node_texts);
}

void plot_stored_tree(int number) { draw_tree(stored_tree(number), tree_heading(number), {}); }

}  // namespace zeb
