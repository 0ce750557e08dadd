// Rows are given from the tips to the root: each terminal takes the next row, and a branch leaves
// its node at a row between those of its outer descendants, next to the smaller of the two. With
// clades in increasing size this keeps vertical lines short: their sum over the tree is below n log
// n for n terminals, so that a caterpillar of 100,000 terminals is a thin staircase.
//
// Columns are given from the root to the tips. Branches are three columns, or as long as their text
// needs; two where that saves a diagram from being cut.
#include "trees/drawing/diagram_layout.h"

#include <algorithm>

#include "base/indices.h"
#include "base/text_columns.h"
#include "trees/drawing/node_order.h"
#include "trees/drawing/text_lines.h"

namespace zeb {
namespace {

constexpr int cut_sign_columns = 3;  // ">>>"
constexpr int usual_span = 3;        // columns of a branch without a text
constexpr int narrow_span = 2;

class diagram_builder {
 public:
  diagram_builder(const_tree_span tree, int ntax, const diagram_style& style)
      : tree_(tree),
        ntax_(ntax),
        style_(style),
        order_(order_for_drawing(tree, ntax, style.outgroup, style.second_largest_first)),
        windows_(windows_for(style.columns)),
        text_width_(order_.nodes(), 0),
        row_(order_.nodes(), 0),
        column_(order_.nodes(), 0) {}

  diagram_layout build(std::span<const std::string> labels,
                       std::span<const std::string> node_texts) {
    take_texts(labels, node_texts);
    place_rows();
    layout_.one_pass = place_columns(usual_span, false) || place_columns(narrow_span, false);
    if (layout_.one_pass)
      align_labels();
    else
      place_columns(usual_span, true);
    for (const int node : order_.preorder) {
      add_branch(node);
      if (node >= ntax_) add_fork(node);
    }
    return std::move(layout_);
  }

 private:
  bool is_terminal(int node) const { return node < ntax_; }
  int ancestor_column(int node) const { return node == ntax_ ? -1 : column_[at(tree_[at(node)])]; }

  void take_texts(std::span<const std::string> labels, std::span<const std::string> node_texts) {
    layout_.labels.resize(at(ntax_));
    layout_.texts.resize(order_.nodes());
    for (const int node : order_.preorder) {
      const std::size_t n = at(node);
      if (is_terminal(node)) layout_.labels[n] = " " + labels[n];
      if (n >= node_texts.size() || node_texts[n].empty()) continue;
      layout_.texts[n] = text_lines(node_texts[n], style_.separator, style_.text_width);
      for (const std::string& line : layout_.texts[n])
        text_width_[n] = std::max(text_width_[n], text_columns(line));
    }
  }
  int lines_of(int node) const {
    return std::max(1, static_cast<int>(layout_.texts[at(node)].size()));
  }

  // ---- rows ----

  /// The further lines of a text stand below its branch, in rows of the node's own clade.
  void place_rows() {
    const int step = style_.roomy ? 2 : 1;
    std::vector<int> stack{ntax_};
    std::vector<int> placed(order_.nodes(), 0);  // descendants that have their rows
    int next = 0;
    while (!stack.empty()) {
      const int node = stack.back();
      if (!is_terminal(node) && placed[at(node)] < order_.count(node)) {
        stack.push_back(order_.child(node, placed[at(node)]++));
        continue;
      }
      stack.pop_back();
      row_[at(node)] = is_terminal(node) ? next : branch_row(node);
      const int free = row_[at(node)] + lines_of(node);
      next = std::max(next, is_terminal(node) ? std::max(free, next + step) : free);
    }
    layout_.rows = next;
  }

  int branch_row(int node) const {
    const int count = order_.count(node);
    if (count == 0) return 0;
    const int above = order_.child(node, 0);
    const int below = order_.child(node, count - 1);
    const int top = row_[at(above)];
    const int bottom = row_[at(below)];
    if (top == bottom) return top;
    if (style_.symmetric) return (top + bottom + 1) / 2;
    if (order_.weight[at(above)] <= order_.weight[at(below)]) return top + 1;
    return std::max(top + 1, bottom - 1);
  }

  // ---- columns ----

  /// Where a text of that width starts that could start at `column`: in a diagram in passes, after
  /// the border that it would lie across, unless it is wider than a window.
  int text_start(int column, int width) const {
    const int end = windows_.end(column);
    return in_passes_ && column + width > end && width <= windows_.others ? end : column;
  }

  /// Column of each node: of its fork, or of a terminal's label. True if all fits in a line.
  bool place_columns(int span, bool in_passes) {
    in_passes_ = in_passes;
    layout_.columns = 0;
    for (const int node : order_.preorder) {
      const int from = ancestor_column(node) + 1;
      const int width = text_width_[at(node)];
      int column = from + (node == ntax_ ? 1 : span - 1);
      if (width > 0) column = std::max(column, text_start(from + 1, width) + width + 1);
      const int label = is_terminal(node) ? text_columns(layout_.labels[at(node)]) : 1;
      if (is_terminal(node)) column = text_start(column, label);
      column_[at(node)] = column;
      layout_.columns = std::max(layout_.columns, column + label);
    }
    return layout_.columns <= style_.columns;
  }

  /// Puts all labels in one column, if the diagram still fits.
  void align_labels() {
    int column = 0;
    int widest = 0;
    for (const int node : order_.preorder)
      if (is_terminal(node)) {
        column = std::max(column, column_[at(node)]);
        widest = std::max(widest, text_columns(layout_.labels[at(node)]));
      }
    if (column + widest > style_.columns) return;
    layout_.columns = column + widest;
    for (const int node : order_.preorder)
      if (is_terminal(node)) column_[at(node)] = column;
  }

  // ---- pieces ----

  void add_dashes(int row, int from, int to) {
    if (from < to)
      layout_.pieces.push_back({row, from, to - from, style_.lines.horizontal, {}, true, true});
  }
  void add_text(int row, int column, std::string_view words, bool left, bool right) {
    const int length = text_columns(words);
    if (length > 0) layout_.pieces.push_back({row, column, length, 0, words, left, right});
  }
  void add_corner(int row, int column, char character, bool left, bool right) {
    layout_.pieces.push_back({row, column, 1, character, {}, left, right});
  }

  /// The horizontal line that leads to a node, its text, and the label of a terminal.
  void add_branch(int node) {
    const int row = row_[at(node)];
    const int from = ancestor_column(node) + 1;
    const int to = column_[at(node)];
    if (is_terminal(node)) add_text(row, to, layout_.labels[at(node)], true, false);
    const std::vector<std::string>& text = layout_.texts[at(node)];
    if (text.empty()) return add_dashes(row, from, to);
    const int start = text_start(from + 1, text_width_[at(node)]);
    add_dashes(row, from, start);
    add_text(row, start, text[0], true, true);
    add_dashes(row, start + text_columns(text[0]), to);
    for (int i = 1; i < static_cast<int>(text.size()); ++i)
      add_text(row + i, start, text[at(i)], false, false);
  }

  /// The vertical line of a node, with a corner for each descendant and for its own branch.
  void add_fork(int node) {
    const line_characters& c = style_.lines;
    const int column = column_[at(node)];
    const int stem = row_[at(node)];
    const int count = order_.count(node);
    if (count < 2) return add_corner(stem, column, c.horizontal, true, count == 1);
    int row = row_[at(order_.child(node, 0))];
    add_corner(row++, column, c.upper_corner, false, true);
    for (int i = 1; i < count; ++i) {
      const int child = row_[at(order_.child(node, i))];
      for (; row < child; ++row)
        add_corner(row, column, row == stem ? c.vertical_left : c.vertical, row == stem, false);
      const bool last = i == count - 1;
      const char plain = last ? c.lower_corner : c.vertical_right;
      const char crossed = last ? c.horizontal_up : c.crossing;
      add_corner(row++, column, child == stem ? crossed : plain, child == stem, true);
    }
  }

  const_tree_span tree_;
  int ntax_;
  const diagram_style& style_;
  drawing_order order_;
  diagram_windows windows_;
  diagram_layout layout_;
  std::vector<int> text_width_, row_, column_;  // by node
  bool in_passes_ = false;
};

}  // namespace

diagram_windows windows_for(int columns) {
  const int first = std::max(columns, 20) - cut_sign_columns;
  return {first, first - cut_sign_columns};
}

diagram_layout lay_out_diagram(const_tree_span tree, int ntax, std::span<const std::string> labels,
                               std::span<const std::string> node_texts,
                               const diagram_style& style) {
  return diagram_builder(tree, ntax, style).build(labels, node_texts);
}

}  // namespace zeb
