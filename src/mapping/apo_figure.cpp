#include "mapping/apo_figure.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "base/indices.h"
#include "base/message_text.h"
#include "mapping/figure_legend.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_text.h"

namespace zeb {
namespace {

constexpr double box_width = 8;   // pixels
constexpr double text_gap = 5;    // between the texts of neighbouring boxes
constexpr double branch_end = 6;  // before the first box and after the last
constexpr figure_color with_unique_changes = {0, 114, 178};
constexpr figure_color with_homoplasy_only = {213, 94, 0};

int pixel(double v) { return static_cast<int>(std::lround(v)); }

/// Symbols only: names would make branches too long, and stand in the legend.
std::string states_in_box(const apomorphy& change) {
  const auto side = [&](const node_values& values) {
    if (values.states == 0) return values_text(change.character, values);
    std::string symbols;
    for (std::uint32_t rest = values.states; rest; rest &= rest - 1)
      symbols += state_symbol(change.character, std::countr_zero(rest));
    return symbols;
  };
  return side(change.from) + ">" + side(change.to);
}

class apo_painter {
 public:
  apo_painter(const_tree_span tree, std::span<const apomorphy> changes, const svg_options& options)
      : shape_(tree), changes_(changes), options_(options) {
    options_.colors = true;
    options_.least_lengths.assign(shape_.nodes(), 0);
    tags_.assign(shape_.nodes(), ambiguous_color.as_tag());
    std::vector<std::uint8_t> unique(shape_.nodes(), 0);
    for (const apomorphy& change : changes) {
      double& length = options_.least_lengths[at(change.node)];
      length += (length == 0 ? 2 * branch_end : 0) + width_of(change);
      if (!change.homoplastic) unique[at(change.node)] = 1;
      tags_[at(change.node)] =
          (unique[at(change.node)] ? with_unique_changes : with_homoplasy_only).as_tag();
    }
    if (options_.branch_height < 0)
      options_.branch_height =
          std::max(pixel(options_.terminal_font * 1.45), pixel(box_height() + 2.6 * font()));
  }

  node_places draw(const std::string& file_name, const std::string& title) {
    std::vector<std::string> labels(at(matrix.ntax));
    for (int t = 0; t < matrix.ntax; ++t) labels[at(t)] = taxon_label(t);
    open_svg_file(file_name, title);
    node_places places = draw_svg_tree(shape_.tree, matrix.ntax, matrix.outgroup,
                                       display.second_largest_first, labels, tags_, options_);
    double x = 0;
    int node = -1;
    for (const apomorphy& change : changes_) {
      if (change.node != node) x = places[at(shape_.ancestor(change.node))].first + branch_end;
      node = change.node;
      const double width = width_of(change);
      draw_box(change, x + width / 2, places[at(node)].second);
      x += width;
    }
    write_legend(title, legend(), options_);
    return places;
  }

 private:
  double font() const { return options_.branch_font; }
  double box_height() const { return options_.thickness + 8.0; }
  double width_of(const apomorphy& change) const {
    const double number = svg_text_width(std::to_string(change.character), font());
    const double states = svg_text_width(states_in_box(change), font());
    return std::max({box_width, number, states}) + text_gap;
  }

  void draw_words(const std::string& words, double middle, double base) {
    const double width = svg_text_width(words, font());
    write_svg(
        text_of("<text x=\"%i\" y=\"%i\" text-anchor=\"middle\">", pixel(middle), pixel(base)));
    write_svg(xml_text(words) + "</text>\n");
    grow_svg_page(middle - width / 2, base - font(), middle + width / 2, base + font() * 0.3);
  }

  void draw_box(const apomorphy& change, double x, double y) {
    write_svg(
        text_of("<rect x=\"%i\" y=\"%i\" width=\"%i\" height=\"%i\" fill=\"%s\""
                " stroke=\"black\" stroke-width=\"1\"/>\n",
                pixel(x - box_width / 2), pixel(y - box_height() / 2), pixel(box_width),
                pixel(box_height()), change.homoplastic ? "white" : "black"));
    draw_words(std::to_string(change.character), x, y - box_height() / 2 - 2);
    draw_words(states_in_box(change), x, y + box_height() / 2 + font() * 0.85);
  }

  std::vector<legend_entry> legend() const {
    using sample = legend_entry::sample;
    std::vector<legend_entry> entries = {
        {sample::filled_box, {}, "character without homoplasy; its number above, its states below"},
        {sample::open_box, {}, "character with homoplasy"},
        {sample::line, with_unique_changes, "branch with changes without homoplasy"},
        {sample::line, with_homoplasy_only,
         "branch with changes of characters with homoplasy only"},
        {sample::line, ambiguous_color, "branch without unambiguous changes"}};
    add_names(entries);
    return entries;
  }

  /// Names of characters that are shown, with those of their states.
  void add_names(std::vector<legend_entry>& entries) const {
    std::vector<int> characters;
    for (const apomorphy& change : changes_) characters.push_back(change.character);
    std::sort(characters.begin(), characters.end());
    characters.erase(std::unique(characters.begin(), characters.end()), characters.end());
    for (const int c : characters) {
      if (at(c) >= matrix.char_names.size() || matrix.char_names[at(c)].name.empty()) continue;
      std::string text = text_of("%i  ", c) + character_name(c);
      const std::vector<std::string>& states = matrix.char_names[at(c)].states;
      for (std::size_t s = 0; s < states.size(); ++s)
        if (!states[s].empty())
          text += (s == 0 ? ": " : ", ") + state_symbol(c, static_cast<int>(s)) + " " + states[s];
      entries.push_back({legend_entry::sample::none, {}, text});
    }
  }

  tree_shape shape_;
  std::span<const apomorphy> changes_;
  svg_options options_;
  std::vector<std::string> tags_;  // by node
};

}  // namespace

svg_options apo_figure_defaults() {
  svg_options options;
  options.branch_font = 9;
  return options;
}

void draw_apo_figure(const figure_request& request, const std::string& file_name,
                     const_tree_span tree, std::span<const apomorphy> changes,
                     const std::string& title) {
  apo_painter painter(tree, changes, request.options);
  end_figure(request, painter.draw(file_name, title));
}

}  // namespace zeb
