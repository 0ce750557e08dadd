#include "mapping/configurations/shape_figures.h"

#include <algorithm>
#include <cmath>
#include <deque>

#include "base/indices.h"
#include "base/message_text.h"
#include "base/numbered_name.h"
#include "console/output.h"
#include "console/settings.h"
#include "mapping/configurations/shape_key.h"
#include "mapping/configurations/shape_painter.h"
#include "mapping/figure_legend.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/svg_file.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using sample = legend_entry::sample;
using point_list = std::vector<landmark_point>;
constexpr double tree_box = 110;  // pixels, the longer side of a box on a tree
constexpr double pair_box = 260;
constexpr double gap = 10;        // between boxes
constexpr double small_font = 9;  // pixels
// Lines of a wireframe, pixels: the ancestor's show beside those on top of them.
constexpr double former_width = 2.6;
constexpr double own_width = 1.1;
constexpr double large_font = 11;

bool is_present(const point_list& shape) {
  return std::ranges::any_of(shape, [](const landmark_point& p) { return !is_missing(p); });
}

/// The boxes of one configuration on a tree.
class configuration_boxes {
 public:
  configuration_boxes(const tree_shape& tree, const node_shapes& shapes)
      : tree_(tree),
        shapes_(shapes),
        seen_(shapes.dimensions, shapes.shapes),
        painter_(seen_, shapes.character, tree_box) {}
  configuration_boxes(const configuration_boxes&) = delete;
  configuration_boxes& operator=(const configuration_boxes&) = delete;

  void draw(int node, double x, double y, const std::string& outline) {
    painter_.begin_box(x, y, outline);
    if (node >= matrix.ntax) painter_.draw_corner_text(std::to_string(node), false, small_font);
    if (!is_present(shapes_.shapes[at(node)])) {
      draw_text(x, y + small_font * 0.36, "no data", small_font,
                " text-anchor=\"middle\" fill=\"rgb(90,90,90)\"");
      return;
    }
    const seen_shape& own = seen_[at(node)];
    if (node == tree_.root()) {
      painter_.draw_wires(own, shape_color, own_width);
    } else {
      const seen_shape& former = seen_[at(tree_.ancestor(node))];
      painter_.draw_wires(former, ancestor_color, former_width);
      painter_.draw_points(former, ancestor_color, 2.5);
      painter_.draw_wires(own, shape_color, own_width);
      painter_.draw_corner_text(text_of("%.3g", shapes_.changes[at(node)]), true, small_font);
    }
    painter_.draw_points(own, shape_color, 1.6);
    if (node != tree_.root())
      painter_.draw_arrows(seen_[at(tree_.ancestor(node))], own, change_color);
  }
  double width() const { return painter_.width(); }
  double height() const { return painter_.height(); }
  shape_key key() const { return {shapes_.character, shapes_.shapes, painter_.scale()}; }

 private:
  const tree_shape& tree_;
  const node_shapes& shapes_;
  seen_shapes seen_;
  shape_painter painter_;
};

/// A tree with a block of boxes on each branch, one for each configuration.
class shape_tree_painter {
 public:
  shape_tree_painter(const tree_shape& tree, const std::vector<node_shapes>& shapes,
                     const svg_options& options)
      : tree_(tree), options_(options), changes_(tree.nodes(), 0) {
    for (const node_shapes& one : shapes) {
      boxes_.emplace_back(tree, one);
      box_width_ = std::max(box_width_, boxes_.back().width());
      box_height_ = std::max(box_height_, boxes_.back().height());
      for (std::size_t v = 0; v < changes_.size(); ++v) changes_[v] += one.changes[v];
    }
    most_ = *std::ranges::max_element(changes_);
    columns_ = std::ceil(std::sqrt(static_cast<double>(shapes.size())));
    rows_ = std::ceil(static_cast<double>(shapes.size()) / columns_);
    options_.colors = true;
    if (options_.branch_height < 0)
      options_.branch_height = static_cast<int>(std::ceil(rows_ * (box_height_ + gap / 2) + gap));
    options_.least_lengths.assign(tree.nodes(), width() + 2 * gap);
  }

  void draw(const figure_request& request, const std::string& file_name, const std::string& title) {
    std::vector<std::string> labels(at(matrix.ntax));
    for (int t = 0; t < matrix.ntax; ++t) labels[at(t)] = taxon_label(t);
    open_svg_file(file_name, title);
    define_arrow_heads();
    const node_places places =
        draw_svg_tree(tree_.tree, matrix.ntax, matrix.outgroup, display.second_largest_first,
                      labels, tags(), options_);
    for (int v = 0; at(v) < tree_.nodes(); ++v)
      if (tree_.has(v)) draw_block(v, places[at(v)].first, places[at(v)].second);
    std::vector<shape_key> keys;
    for (const configuration_boxes& one : boxes_) keys.push_back(one.key());
    write_shape_legend(title, legend(), keys, options_);
    end_figure(request, places);
  }

 private:
  double width() const { return columns_ * (box_width_ + gap / 2) - gap / 2; }

  std::vector<std::string> tags() const {
    std::vector<std::string> tags(tree_.nodes());
    for (int v = 0; at(v) < tree_.nodes(); ++v)
      if (tree_.has(v) && v != tree_.root()) tags[at(v)] = color_of(v).as_tag();
    return tags;
  }
  figure_color color_of(int node) const {
    constexpr double palest = 0.88;  // the end of the scale can't be seen as a line
    return color_of_fraction(most_ > 0 ? palest * changes_[at(node)] / most_ : 0);
  }

  /// On the branch of the node, just before its fork.
  void draw_block(int node, double right, double middle) {
    const std::string outline = node == tree_.root() ? "black" : color_of(node).as_svg();
    for (std::size_t i = 0; i < boxes_.size(); ++i) {
      const double column = std::fmod(static_cast<double>(i), columns_);
      const double row = std::floor(static_cast<double>(i) / columns_);
      const double x = right - gap - width() + column * (box_width_ + gap / 2) + box_width_ / 2;
      const double y = middle + (row - (rows_ - 1) / 2) * (box_height_ + gap / 2);
      boxes_[i].draw(node, x, y, outline);
    }
  }

  std::vector<legend_entry> legend() const {
    std::vector<legend_entry> entries = {
        {sample::line, shape_color, "configuration of the node or terminal"},
        {sample::line, ancestor_color, "configuration of its ancestor"}};
    if (lmark.settings.lines)
      entries.push_back(
          {sample::line, change_color, "change of a landmark since the ancestor (arrow)"});
    entries.push_back({sample::gradient, {}, text_of("change along the branch, 0 to %.4g", most_)});
    entries.push_back({sample::none,
                       {},
                       "in the boxes: above the number of the node, below the sum of the "
                       "distances that its landmarks moved"});
    return entries;
  }

  const tree_shape& tree_;
  svg_options options_;
  std::deque<configuration_boxes> boxes_;  // which don't move
  std::vector<double> changes_;            // by node
  double most_ = 0;
  double columns_ = 1;
  double rows_ = 1;
  double box_width_ = 0;  // the largest
  double box_height_ = 0;
};

std::string map_title(int tree, const std::vector<int>& characters) {
  std::string title = text_of("Tree %i, ", tree);
  if (characters.size() > 1)
    return title + counted(static_cast<int>(characters.size()), "configuration", "configurations");
  return title + name_of_configuration(characters.front());
}

void draw_map_of(const landmark_map& map, int tree, const std::vector<int>& characters) {
  const tree_shape shape(stored_tree(tree));
  std::vector<node_shapes> shapes;
  for (const int c : characters) shapes.push_back(shapes_on_tree(shape, c));
  const int tree_number = map.trees.size() > 1 ? tree : -1;
  const int number = !map.together && map.characters.size() > 1 ? characters.front() : -1;
  shape_tree_painter(shape, shapes, map.figure.options)
      .draw(map.figure, numbered_file_name(map.figure.file_name, tree_number, number),
            map_title(tree, characters));
}

class box_page {
 public:
  box_page(const shape_boxes& boxes, const svg_options& options)
      : boxes_(boxes),
        options_(options),
        seen_(configuration_of(boxes.character)->dimensions, all_shapes()),
        painter_(seen_, boxes.character, pair_box) {
    const double count = static_cast<double>(boxes.pairs.size());
    constexpr double most_columns = 5;
    columns_ = std::clamp(std::ceil(std::sqrt(count)), 1.0, most_columns);
  }

  void draw() {
    define_arrow_heads();
    write_svg("<g stroke-width=\"0\" stroke=\"black\" font-family=\"Verdana\">\n");
    for (std::size_t i = 0; i < boxes_.pairs.size(); ++i) draw_pair(i);
    write_shape_legend(boxes_.title, legend(), {{boxes_.character, all_shapes(), painter_.scale()}},
                       options_);
  }

 private:
  std::vector<point_list> all_shapes() const {
    std::vector<point_list> all;
    for (const shape_pair& pair : boxes_.pairs) {
      all.push_back(pair.from);
      all.push_back(pair.to);
    }
    return all;
  }

  void draw_pair(std::size_t i) {
    const shape_pair& pair = boxes_.pairs[i];
    const double font = options_.terminal_font;
    const double row_height = painter_.height() + font * 2.4;
    const double column = std::fmod(static_cast<double>(i), columns_);
    const double row = std::floor(static_cast<double>(i) / columns_);
    const double x = options_.shift + painter_.width() / 2 + column * (painter_.width() + gap);
    const double y = painter_.height() / 2 + font * 1.6 + row * row_height;
    draw_text(x, y - painter_.height() / 2 - font * 0.5, pair.name, font,
              " text-anchor=\"middle\"");
    painter_.begin_box(x, y, "rgb(120,120,120)");
    const seen_shape& from = seen_[2 * i];
    const seen_shape& to = seen_[2 * i + 1];
    if (is_present(pair.from)) {
      painter_.draw_wires(from, ancestor_color, 2 * former_width);
      painter_.draw_points(from, ancestor_color, 4.5);
    }
    if (!is_present(pair.to)) return painter_.draw_corner_text("no data", true, large_font);
    painter_.draw_wires(to, shape_color, 2 * own_width);
    painter_.draw_points(to, shape_color, 3);
    if (is_present(pair.from)) {
      painter_.draw_arrows(from, to, change_color);
      painter_.draw_corner_text(text_of("%.4g", distance_of_shapes(pair.from, pair.to)), true,
                                large_font);
    }
  }

  std::vector<legend_entry> legend() const {
    std::vector<legend_entry> entries = {
        {sample::line, shape_color, "configuration that is named above the box"},
        {sample::line, ancestor_color, boxes_.meaning_of_from}};
    if (lmark.settings.lines)
      entries.push_back({sample::line, change_color, "difference of a landmark (arrow)"});
    entries.push_back(
        {sample::none, {}, "in the boxes: the sum of the distances between their landmarks"});
    return entries;
  }

  const shape_boxes& boxes_;
  const svg_options& options_;
  seen_shapes seen_;
  shape_painter painter_;
  double columns_ = 1;
};

}  // namespace

void draw_landmark_map(const landmark_map& map) {
  for (const int tree : map.trees) {
    if (map.together) {
      draw_map_of(map, tree, map.characters);
      continue;
    }
    for (const int c : map.characters) draw_map_of(map, tree, {c});
  }
}

void draw_shape_boxes(const figure_request& request, const std::string& file_name,
                      const shape_boxes& boxes) {
  open_svg_file(file_name, boxes.title);
  box_page(boxes, request.options).draw();
  end_figure();
  if (settings.report) report_line("Configurations saved to file", file_name);
}

}  // namespace zeb
