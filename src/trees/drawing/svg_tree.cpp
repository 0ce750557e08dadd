// Terminals stand at even distances, a node midway between its outer descendants, and all names in
// one column unless tags give branches lengths of their own. Every legend has the rows around its
// branch for itself: rows of different clades don't mix, so a legend no higher than the distance of
// two terminals and no longer than its branch touches nothing else. Fitting sizes keep to that;
// sizes given by the user are taken as they are.
#include "trees/drawing/svg_tree.h"

#include <algorithm>
#include <cmath>

#include "base/indices.h"
#include "base/message_text.h"
#include "trees/drawing/branch_style.h"
#include "trees/drawing/node_order.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_text.h"
#include "trees/drawing/text_lines.h"

namespace zeb {
namespace {

constexpr double usual_length = 40;  // pixels of a branch, where the tree isn't too deep
constexpr double least_length = 8;   // pixels
constexpr double usual_width = 900;  // pixels of a deep tree's branches
constexpr double label_gap = 6;      // pixels between a branch and the name after it
constexpr double legend_gap = 4;     // pixels left and right of a legend
constexpr double ascent = 0.76;      // of the font size: top of capitals over the base line
constexpr double descent = 0.22;
constexpr double middle = 0.36;  // base line below the middle of the letters

int pixel(double v) { return static_cast<int>(std::lround(v)); }

class svg_tree_writer {
 public:
  svg_tree_writer(const_tree_span tree, int ntax, int outgroup, bool second_largest_first,
                  std::span<const std::string> labels, std::span<const std::string> node_texts,
                  const svg_options& options)
      : tree_(tree),
        ntax_(ntax),
        labels_(labels),
        options_(options),
        order_(order_for_drawing(tree, ntax, outgroup, second_largest_first)),
        styles_(order_.nodes()),
        legends_(order_.nodes()),
        places_(order_.nodes()) {
    read_tags(node_texts);
    row_height_ = options.branch_height >= 0 ? options.branch_height : fitting_height();
    place_rows();
    place_columns();
  }

  node_places write() {
    write_names();
    group(options_.branch_font, options_.branch_italics);
    for (const int node : order_.preorder) write_forks(node);
    write_branch(ntax_);
    for (const int node : order_.preorder) write_legend(node);
    write_caption();
    return std::move(places_);
  }

 private:
  bool is_terminal(int node) const { return node < ntax_; }
  double& x(int node) { return places_[at(node)].first; }
  double& y(int node) { return places_[at(node)].second; }
  double thickness(int node) const {
    const double own = styles_[at(node)].thickness;
    return own > 0 ? own : options_.thickness;
  }

  // ---- tags ----

  void read_tags(std::span<const std::string> node_texts) {
    for (const int node : order_.preorder) {
      if (at(node) >= node_texts.size() || node_texts[at(node)].empty()) continue;
      branch_style& style = styles_[at(node)];
      if (options_.colors)
        style = read_branch_style(node_texts[at(node)]);
      else
        style.text = node_texts[at(node)];
      has_lengths_ = has_lengths_ || style.length >= 0;
      const char separator = options_.position == 'd' ? '\0' : options_.separator;
      if (!style.text.empty())
        legends_[at(node)] = text_lines(style.text, separator, options_.text_width);
    }
  }

  double line_step() const {
    return options_.text_separation >= 0 ? options_.text_separation
                                         : std::ceil(options_.branch_font * 1.2);
  }
  double legend_height(int node) const {
    const auto lines = static_cast<double>(legends_[at(node)].size());
    return lines < 1 ? 0 : (lines - 1) * line_step() + options_.branch_font * (ascent + descent);
  }
  double legend_width(int node) const {
    double width = 0;
    for (const std::string& line : legends_[at(node)])
      width = std::max(width, svg_text_width(line, options_.branch_font));
    return width;
  }

  // ---- places ----

  double fitting_height() const {
    double height = std::max(options_.terminal_font * 1.45, options_.thickness + 4.0);
    for (const int node : order_.preorder)
      height = std::max(height, legend_height(node) + (options_.position == 'c' ? 4 : 8));
    return std::ceil(height);
  }

  void place_rows() {
    double next = 0;
    for (const int node : order_.preorder)
      if (is_terminal(node)) {
        y(node) = next;
        next += row_height_;
      }
    for (auto n = order_.preorder.rbegin(); n != order_.preorder.rend(); ++n) {
      const int count = order_.count(*n);
      if (count == 0) continue;
      y(*n) = (y(order_.child(*n, 0)) + y(order_.child(*n, count - 1))) / 2;
    }
  }

  int depth() const {
    std::vector<int> depths(order_.nodes(), 0);
    int deepest = 1;
    for (const int node : order_.preorder)
      if (node != ntax_) {
        depths[at(node)] = depths[at(tree_[at(node)])] + 1;
        deepest = std::max(deepest, depths[at(node)]);
      }
    return deepest;
  }

  double branch_length(int node, double usual) const {
    if (styles_[at(node)].length >= 0) return styles_[at(node)].length;
    if (options_.branch_length >= 0) return options_.branch_length;
    if (!options_.least_lengths.empty()) usual = std::max(usual, options_.least_lengths[at(node)]);
    const double legend = legend_width(node);
    return legend > 0 ? std::max(usual, std::ceil(legend + 2 * legend_gap + 4)) : usual;
  }

  void place_columns() {
    const double usual = std::clamp(std::floor(usual_width / depth()), least_length, usual_length);
    x(ntax_) = options_.shift + branch_length(ntax_, std::min(usual, 15.0));
    double last = 0;
    for (const int node : order_.preorder) {
      if (node != ntax_) x(node) = x(tree_[at(node)]) + branch_length(node, usual);
      if (is_terminal(node)) last = std::max(last, x(node));
    }
    if (has_lengths_) return;
    for (const int node : order_.preorder)
      if (is_terminal(node)) x(node) = last;
  }

  // ---- writing ----

  void group(int font_size, bool italics) {
    const char* format =
        "<g stroke-width=\"%i\" stroke=\"black\" font-family=\"Verdana\" font-size=\"%i\">\n";
    std::string text = text_of(format, options_.pen_width, font_size);
    if (italics) text.insert(text.size() - 2, " font-style=\"italic\"");
    write_svg(text);
  }

  void write_text(double left, double base, double font_size, std::string_view text,
                  std::string_view attributes) {
    write_svg(text_of("<text x=\"%i\" y=\"%i\"", pixel(left), pixel(base)));
    write_svg(attributes);
    write_svg(">" + xml_text(text) + "</text>\n");
    grow_svg_page(left, base - font_size * ascent - options_.pen_width,
                  left + svg_text_width(text, font_size) + options_.pen_width,
                  base + font_size * descent + options_.pen_width);
  }

  void write_names() {
    group(options_.terminal_font, options_.italics);
    for (const int node : order_.preorder)
      if (is_terminal(node))
        write_text(x(node) + label_gap, y(node) + options_.terminal_font * middle,
                   options_.terminal_font, labels_[at(node)], "");
    write_svg("</g>\n");
  }

  void write_line(int node, double x1, double y1, double x2, double y2) {
    const branch_style& style = styles_[at(node)];
    const char* ends = style.dashed ? "stroke-dasharray=\"6,4\"" : "stroke-linecap=\"square\"";
    write_svg(text_of(
        "<line x1=\"%i\" y1=\"%i\" x2=\"%i\" y2=\"%i\" stroke=\"%s\""
        " stroke-width=\"%g\" %s/>\n",
        pixel(x1), pixel(y1), pixel(x2), pixel(y2), style.color.c_str(), thickness(node), ends));
    const double half = thickness(node) / 2 + 1;
    grow_svg_page(std::min(x1, x2) - half, std::min(y1, y2) - half, std::max(x1, x2) + half,
                  std::max(y1, y2) + half);
  }

  /// The horizontal line of a node's own branch.
  void write_branch(int node) {
    const double from = node == ntax_ ? options_.shift : x(tree_[at(node)]);
    write_line(node, from, y(node), x(node), y(node));
  }

  /// The branches to the descendants, each in its colour from the middle of the fork; outer ones
  /// first, so that inner ones show where they run together.
  void write_forks(int node) {
    std::vector<int> nodes;
    for (int i = 0; i < order_.count(node); ++i) nodes.push_back(order_.child(node, i));
    std::stable_sort(nodes.begin(), nodes.end(), [&](int a, int b) {
      return std::abs(y(a) - y(node)) > std::abs(y(b) - y(node));
    });
    for (const int child : nodes) {
      if (pixel(y(child)) != pixel(y(node))) write_line(child, x(node), y(node), x(node), y(child));
      write_branch(child);
    }
  }

  void write_legend(int node) {
    const std::vector<std::string>& lines = legends_[at(node)];
    if (lines.empty()) return;
    const double from = node == ntax_ ? options_.shift : x(tree_[at(node)]);
    double to = x(node);
    // Names in one column make long branches of terminals: their legends stay near the fork.
    if (is_terminal(node)) to = std::min(to, from + legend_width(node) + 6 * legend_gap);
    const double height = legend_height(node);
    double top = y(node) - height / 2;
    if (options_.position == 'a') top = y(node) - thickness(node) / 2 - 2 - height;
    if (options_.position == 'b') top = y(node) + thickness(node) / 2 + 2;
    double base = top + options_.branch_font * ascent - options_.legend_up;
    for (const std::string& line : lines) {
      const double width = svg_text_width(line, options_.branch_font);
      const double left = (from + to - width) / 2 + options_.legend_shift;
      if (!line.empty())
        write_text(std::max(left, from + 1 + options_.legend_shift), base, options_.branch_font,
                   line, " filter=\"url(#white_background)\"");
      base += line_step();
    }
  }

  void write_caption() {
    if (options_.caption.empty()) return;
    const double width = std::max(480.0, svg_file.right - svg_file.left);
    const int columns = static_cast<int>(width / (options_.terminal_font * 0.68));
    double base = svg_file.bottom + options_.terminal_font * 2.2;
    for (const std::string& line : text_lines(options_.caption, '\\', columns)) {
      write_text(options_.shift, base, options_.terminal_font, line,
                 text_of(" font-size=\"%i\" font-style=\"normal\"", options_.terminal_font));
      base += std::ceil(options_.terminal_font * 1.4);
    }
  }

  const_tree_span tree_;
  int ntax_;
  std::span<const std::string> labels_;
  const svg_options& options_;
  drawing_order order_;
  std::vector<branch_style> styles_;               // by node
  std::vector<std::vector<std::string>> legends_;  // by node: lines
  node_places places_;
  double row_height_ = 0;
  bool has_lengths_ = false;  // a tag gives its branch a length
};

}  // namespace

node_places draw_svg_tree(const_tree_span tree, int ntax, int outgroup, bool second_largest_first,
                          std::span<const std::string> labels,
                          std::span<const std::string> node_texts, const svg_options& options) {
  return svg_tree_writer(tree, ntax, outgroup, second_largest_first, labels, node_texts, options)
      .write();
}

}  // namespace zeb
