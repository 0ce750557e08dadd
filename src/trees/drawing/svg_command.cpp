// ttags &: the tag tree as an SVG figure.
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "language/input.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/drawing/display.h"
#include "trees/drawing/figure_request.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_tree.h"
#include "trees/drawing/tags.h"

namespace zeb {
namespace {

void draw_tag_tree() {
  if (!tags.tags_present) error_end("No tree-tags defined!");
  svg_options defaults;
  defaults.position = tags.tag_position;
  defaults.separator = tags.tag_separator;
  defaults.text_width = tags.tag_width;
  const figure_request request = read_figure_request(defaults);
  std::vector<std::string> labels(at(matrix.ntax));
  for (int t = 0; t < matrix.ntax; ++t) labels[at(t)] = taxon_label(t);
  open_svg_file(request.file_name, tags.tag_title);
  const node_places places =
      draw_svg_tree(tags.tag_tree, matrix.ntax, matrix.outgroup, display.second_largest_first,
                    labels, tags.tag_texts, request.options);
  end_figure(request, places);
}

}  // namespace

void graphic_tags() {
  const int c = skip_blanks_peek();
  if (c == ';') return end_figure();
  if (accept_char('+')) return add_to_drawing();
  draw_tag_tree();
}

}  // namespace zeb
