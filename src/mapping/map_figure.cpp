#include "mapping/map_figure.h"

#include <bit>
#include <vector>

#include "base/indices.h"
#include "base/message_text.h"
#include "mapping/figure_legend.h"
#include "matrix/matrix.h"
#include "trees/drawing/display.h"
#include "trees/drawing/svg_file.h"

namespace zeb {
namespace {

class map_painter {
 public:
  map_painter(const_tree_span tree, const mapped_character& mapped)
      : shape_(tree), mapped_(mapped) {
    for (const node_values& values : mapped.at_nodes) all_.join(values);
  }

  /// What the branch of each node is drawn with.
  std::vector<std::string> tags() {
    std::vector<std::string> texts(shape_.nodes());
    for (int v = 0; at(v) < texts.size(); ++v)
      if (shape_.has(v)) texts[at(v)] = tag_of(v);
    return texts;
  }

  /// After the tags, which tell what is needed.
  std::vector<legend_entry> legend() const {
    std::vector<legend_entry> entries;
    std::size_t number = 0;
    for (std::uint32_t rest = all_.states; rest; rest &= rest - 1)
      entries.push_back({legend_entry::sample::line, color_of_state(number++),
                         meaning_of(std::countr_zero(rest))});
    if (all_.states == 0 && all_.known())
      entries.push_back({legend_entry::sample::gradient, {}, values_text(character(), all_)});
    if (any_ambiguous_)
      entries.push_back({legend_entry::sample::line, ambiguous_color, "ambiguous"});
    if (any_inferred_)
      entries.push_back(
          {legend_entry::sample::dashed_line, ambiguous_color, "dashed: no data, as inferred"});
    return entries;
  }

 private:
  int character() const { return mapped_.character; }

  std::string tag_of(int node) {
    const node_values& values = mapped_.at_nodes[at(node)];
    std::string tag;
    if (node < matrix.ntax && says_nothing(character(), cell(node, character()))) {
      any_inferred_ = true;
      tag = "-";
    }
    if (!values.known()) return tag + ambiguous_color.as_tag();
    if (values.states == 0) return tag + color_in_range(values.range).as_tag();
    if (!values.ambiguous()) return tag + color_of_state(number_of(values.states)).as_tag();
    any_ambiguous_ = true;
    return tag + ambiguous_color.as_tag() + "/" + values_text(character(), values);
  }

  /// How many states of the figure come before it.
  std::size_t number_of(std::uint32_t state) const {
    return static_cast<std::size_t>(std::popcount(all_.states & (state - 1)));
  }
  figure_color color_in_range(const value_range& range) const {
    const double width = all_.range.high - all_.range.low;
    const double middle = (range.low + range.high) / 2.0 - all_.range.low;
    return color_of_fraction(width > 0 ? middle / width : 0.5);
  }
  /// The symbol, and the name if it has one.
  std::string meaning_of(int state) const {
    const std::string symbol = state_symbol(character(), state);
    if (at(character()) >= matrix.char_names.size()) return symbol;
    const std::vector<std::string>& names = matrix.char_names[at(character())].states;
    return at(state) < names.size() && !names[at(state)].empty() ? symbol + ": " + names[at(state)]
                                                                 : symbol;
  }

  tree_shape shape_;
  const mapped_character& mapped_;
  node_values all_;
  bool any_ambiguous_ = false;
  bool any_inferred_ = false;
};

}  // namespace

svg_options map_figure_defaults() {
  svg_options options;
  options.thickness = 4;
  return options;
}

void draw_map_figure(const figure_request& request, const std::string& file_name,
                     const_tree_span tree, const mapped_character& mapped,
                     const figure_titles& titles) {
  map_painter painter(tree, mapped);
  svg_options options = request.options;
  options.colors = true;
  std::vector<std::string> labels(at(matrix.ntax));
  for (int t = 0; t < matrix.ntax; ++t) labels[at(t)] = taxon_label(t);
  open_svg_file(file_name, titles.title);
  const node_places places =
      draw_svg_tree(tree, matrix.ntax, matrix.outgroup, display.second_largest_first, labels,
                    painter.tags(), options);
  write_legend(titles.heading, painter.legend(), options);
  end_figure(request, places);
}

}  // namespace zeb
