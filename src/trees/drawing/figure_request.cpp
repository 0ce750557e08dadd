#include "trees/drawing/figure_request.h"

#include <cmath>
#include <vector>

#include "base/errors.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/options.h"
#include "trees/commands.h"
#include "trees/drawing/svg_file.h"
#include "trees/hooks.h"

namespace zeb {
namespace {

constexpr std::size_t longest_caption = 1000;
constexpr int largest_size = 10000;  // pixels, of any option

void read_coordinate_array(figure_request& request) {
  if (!macros_on() || !hooks_of_trees.user_arrays.read_name)
    error_end("This option is valid only when macros are enabled");
  request.coordinate_array = hooks_of_trees.user_arrays.read_name();
}

template <auto member>
constexpr auto size(std::string_view keyword, int lowest, std::string_view missing) {
  return number<&figure_request::options, member>(
             keyword, {static_cast<double>(lowest), largest_size}, missing)
      .tells_highest();
}
template <auto member>
constexpr auto flag(std::string_view keyword) {
  return choice<&figure_request::options, member>(keyword, 1);
}

constexpr command_options rows = {
    size<&svg_options::branch_length>(
        "blength", 0, "String \"blength\" must be followed by branch length (in pixels)")
        .help("span of a branch"),
    size<&svg_options::branch_height>(
        "bheight", 0, "String \"bheight\" must be followed by branch height (in pixels)")
        .help("distance of terminals"),
    size<&svg_options::thickness>(
        "thickness", 0, "String \"thickness\" must be followed by branch thickness (in pixels)")
        .help("of the branches"),
    flag<&svg_options::colors>("colors").help("colour the branches"),
    size<&svg_options::terminal_font>("fontsize", 1,
                                      "String \"fontsize\" must be followed by font size")
        .with<&figure_request::options, &svg_options::branch_font>()
        .help("of all texts"),
    size<&svg_options::terminal_font>("tfontsize", 1,
                                      "String \"tfontsize\" must be followed by font size")
        .help("of taxon names"),
    size<&svg_options::branch_font>("bfontsize", 1,
                                    "String \"bfontsize\" must be followed by font size")
        .help("of branch legends"),
    flag<&svg_options::italics>("italics").help("taxon names in italics"),
    flag<&svg_options::branch_italics>("bitalics").help("legends in italics"),
    size<&svg_options::pen_width>("penwidth", 0,
                                  "String \"penwidth\" must be followed by font thickness")
        .help("stroke of the letters"),
    size<&svg_options::text_separation>("txtsep", 0,
                                        "String \"txtsep\" must be followed by text separation")
        .help("distance of the lines of a tag"),
    size<&svg_options::legend_up>("legup", -largest_size,
                                  "String \"legup\" must be followed by legend up-shift")
        .help("raise the legends"),
    size<&svg_options::legend_shift>("legshift", -largest_size,
                                     "String \"legshift\" must be followed by pixel value")
        .help("shift the legends sideways"),
    size<&svg_options::shift>("shift", -largest_size,
                              "String \"shift\" must be followed by pixel value")
        .help("move the tree right"),
    form<read_coordinate_array>("xysave").argument("array").help(
        "save the places of the nodes, leave the file open"),
    text<&figure_request::options, &svg_options::caption>("caption", longest_caption,
                                                          "Legend too long (max.=1000 characters)")
        .help("text below the tree; must be the last option"),
};

void save_places(int array, const node_places& places) {
  std::vector<double> values;
  for (const auto& [x, y] : places) {
    values.push_back(std::round(x));
    values.push_back(std::round(y));
  }
  hooks_of_trees.user_arrays.store(array, values, 2);
  let_svg_file_take_additions();
}

}  // namespace

constexpr option_table figure_options =
    rows.table("ttags", {.unknown = "Unrecognized option for \"ttag\": %s"}, &addition_options);

figure_request read_figure_request(const svg_options& defaults) {
  if (read_file_name() == 0) error_end("Must give the name of the figure's file");
  figure_request request{std::string(token()), defaults, -1};
  while (skip_blanks_peek() != ';') read_option(request, figure_options);
  return request;
}

void end_figure() {
  const std::string name = svg_file.file.name();
  if (!close_svg_file()) error_end("Cannot write to file", name + svg_file.file.cause());
}

void end_figure(const figure_request& request, const node_places& places) {
  const std::string name = svg_file.file.name();
  if (request.coordinate_array >= 0)
    save_places(request.coordinate_array, places);
  else
    end_figure();
  if (settings.report) report_line("Tree saved to file", name);
}

}  // namespace zeb
