// ttags &: the tag tree as an SVG figure.
#include <array>
#include <cmath>

#include "base/errors.h"
#include "base/process.h"
#include "console/output.h"
#include "language/input.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/drawing/command_text.h"
#include "trees/drawing/display.h"
#include "trees/drawing/svg_commands.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_tree.h"
#include "trees/drawing/tags.h"

namespace zeb {
namespace {

constexpr std::size_t longest_caption = 1000;
constexpr int largest_size = 10000;  // pixels, of any option

/// An option with a number, or, without `number`, one that sets `flag`.
struct option_row {
  std::string_view word;
  int svg_options::*number = nullptr;
  int svg_options::*second_number = nullptr;  // set to the same
  bool svg_options::*flag = nullptr;
  int lowest = 0;
  const char* missing = nullptr;
};

constexpr std::array option_rows = {
    option_row{.word = "blength",
               .number = &svg_options::branch_length,
               .missing = "String \"blength\" must be followed by branch length (in pixels)"},
    option_row{.word = "bheight",
               .number = &svg_options::branch_height,
               .missing = "String \"bheight\" must be followed by branch height (in pixels)"},
    option_row{.word = "thickness",
               .number = &svg_options::thickness,
               .missing = "String \"thickness\" must be followed by branch thickness (in pixels)"},
    option_row{.word = "colors", .flag = &svg_options::colors},
    option_row{.word = "fontsize",
               .number = &svg_options::terminal_font,
               .second_number = &svg_options::branch_font,
               .lowest = 1,
               .missing = "String \"fontsize\" must be followed by font size"},
    option_row{.word = "tfontsize",
               .number = &svg_options::terminal_font,
               .lowest = 1,
               .missing = "String \"tfontsize\" must be followed by font size"},
    option_row{.word = "bfontsize",
               .number = &svg_options::branch_font,
               .lowest = 1,
               .missing = "String \"bfontsize\" must be followed by font size"},
    option_row{.word = "italics", .flag = &svg_options::italics},
    option_row{.word = "bitalics", .flag = &svg_options::branch_italics},
    option_row{.word = "penwidth",
               .number = &svg_options::pen_width,
               .missing = "String \"penwidth\" must be followed by font thickness"},
    option_row{.word = "txtsep",
               .number = &svg_options::text_separation,
               .missing = "String \"txtsep\" must be followed by text separation"},
    option_row{.word = "legup",
               .number = &svg_options::legend_up,
               .lowest = -largest_size,
               .missing = "String \"legup\" must be followed by legend up-shift"},
    option_row{.word = "legshift",
               .number = &svg_options::legend_shift,
               .lowest = -largest_size,
               .missing = "String \"legshift\" must be followed by pixel value"},
    option_row{.word = "shift",
               .number = &svg_options::shift,
               .lowest = -largest_size,
               .missing = "String \"shift\" must be followed by pixel value"},
    option_row{.word = "xysave"},
    option_row{.word = "caption"},
};

struct drawing_request {
  svg_options options;
  int coordinate_array = -1;  // the user's array for the places of the nodes; -1 none
};

const option_row& find_option_row(const std::string& word) {
  for (const option_row& row : option_rows)
    if (is_prefix(word, row.word)) return row;
  error_end("Unrecognized option for \"ttag\":", word);
}

void read_number_option(const option_row& row, svg_options& options) {
  int value = 0;
  if (!read_optional_int(&value) || value < row.lowest) error_end(row.missing);
  if (value > largest_size) error_end(row.missing, "- at most", largest_size);
  options.*row.number = value;
  if (row.second_number) options.*row.second_number = value;
}

int read_coordinate_array() {
  if (!settings.macros || !user_arrays.read_name)
    error_end("This option is valid only when macros are enabled");
  return user_arrays.read_name();
}

drawing_request read_request() {
  drawing_request request;
  request.options.position = tags.tag_position;
  request.options.separator = tags.tag_separator;
  request.options.text_width = tags.tag_width;
  while (skip_blanks_peek() != ';') {
    if (read_word() == 0) {
      read_item();
      error_end("Unrecognized option for \"ttag\":", token());
    }
    const option_row& row = find_option_row(std::string(token()));
    if (row.number) {
      read_number_option(row, request.options);
    } else if (row.flag) {
      request.options.*row.flag = true;
    } else if (row.word == "xysave") {
      request.coordinate_array = read_coordinate_array();
    } else {
      request.options.caption = read_text_to_semicolon();
      if (request.options.caption.size() > longest_caption)
        error_end("Legend too long (max.=1000 characters)");
    }
  }
  return request;
}

void save_places(int array, const node_places& places) {
  std::vector<double> values;
  for (const auto& [x, y] : places) {
    values.push_back(std::round(x));
    values.push_back(std::round(y));
  }
  user_arrays.store(array, values, 2);
  svg_file.takes_additions = true;
}

void finish_drawing() {
  const std::string name = svg_file.name;
  if (!close_svg_file()) error_end("Cannot write to file", name);
}

void draw_tag_tree() {
  if (!tags.tags_present) error_end("No tree-tags defined!");
  read_item();
  const std::string name(token());
  const drawing_request request = read_request();
  std::vector<std::string> labels(static_cast<std::size_t>(matrix.ntax));
  for (int t = 0; t < matrix.ntax; ++t) labels[static_cast<std::size_t>(t)] = taxon_label(t);
  open_svg_file(name, tags.tag_title);
  const node_places places =
      draw_svg_tree(tags.tag_tree, matrix.ntax, matrix.outgroup, display.second_largest_first,
                    labels, tags.tag_texts, request.options);
  if (request.coordinate_array >= 0)
    save_places(request.coordinate_array, places);
  else
    finish_drawing();
  if (settings.report) report_line("Tree saved to file", name);
}

}  // namespace

void graphic_tags() {
  const int c = skip_blanks_peek();
  if (c == ';') return finish_drawing();
  if (accept_char('+')) return add_to_drawing();
  draw_tag_tree();
}

}  // namespace zeb
