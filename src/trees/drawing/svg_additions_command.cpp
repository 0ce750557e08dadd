// ttags &+: lines, rectangles and texts added to a drawing that was left open.
#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/options.h"
#include "trees/commands.h"
#include "trees/drawing/branch_style.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_text.h"

namespace zeb {
namespace {

constexpr std::size_t longest_added_text = 1024;
constexpr std::size_t longest_code = 255;
constexpr double farthest = 1e6;  // pixels from the page's corner

constexpr const char* expected_option =
    "Expected option (\"write\", \"line\" , \"text\", \"rect\")";
constexpr const char* expected_color = "Indicate color in parentheses (as for tags)";

/// What is to be added, in SVG, and the boxes that must be on the page; written when all of it was
/// read.
struct addition {
  std::string svg{};
  std::vector<std::array<double, 4>> boxes{};  // left, top, right, bottom
};

double read_coordinate(const char* option) {
  double value = 0;
  if (!read_optional_float(&value)) error_end("Expected coordinates for option", option);
  if (!(std::abs(value) <= farthest)) error_end("Coordinates out of range for option", option);
  return value;
}

/// A code in parentheses, if one comes next.
color_code read_code() {
  color_code code;
  if (!accept_char('(')) return code;
  const comma_reading commas;
  commas.set_literal(true);
  std::string text;
  for (int c = read_char(); c != ')'; c = read_char()) {
    if (c == ';') error_end(expected_color);
    text += static_cast<char>(c);
    if (text.size() > longest_code) error_end("Color code too long (max. 255 characters)");
  }
  code = read_color_code(text);
  if (code.count < 3) error_end(expected_color);
  return code;
}

/// After the coordinates of a line or rectangle come codes, a further option or the end.
color_code read_code_of_shape() {
  const int c = skip_blanks_peek();
  if (c != '(' && c != ';' && !std::isalpha(c)) {
    error_end(expected_color);
  }
  return read_code();
}

std::string stroke_of(const color_code& code) {
  const double width = code.count > 3 ? std::abs(code.value[3]) : 1;
  std::string text = text_of(" stroke=\"%s\" stroke-width=\"%g\"",
                             code.count >= 3 ? code.rgb().c_str() : "black", width);
  if (code.count >= 3 && code.value[0] < 0) text += " stroke-dasharray=\"6,4\"";
  return text;
}

void read_line(addition& added) {
  double place[4];
  for (double& v : place) v = read_coordinate("line");
  const color_code code = read_code_of_shape();
  added.svg += text_of("<line x1=\"%g\" y1=\"%g\" x2=\"%g\" y2=\"%g\"", place[0], place[1],
                       place[2], place[3]) +
               stroke_of(code) + "/>\n";
  const double half = code.count > 3 ? std::abs(code.value[3]) / 2 : 1;
  added.boxes.push_back({std::min(place[0], place[2]) - half, std::min(place[1], place[3]) - half,
                         std::max(place[0], place[2]) + half, std::max(place[1], place[3]) + half});
}

void read_rectangle(addition& added) {
  double place[4];
  for (double& v : place) v = read_coordinate("rect");
  const color_code line = read_code_of_shape();
  const color_code fill = read_code_of_shape();
  const double left = std::min(place[0], place[2]), right = std::max(place[0], place[2]);
  const double top = std::min(place[1], place[3]), bottom = std::max(place[1], place[3]);
  std::string text = text_of("<rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\"", left, top,
                             right - left, bottom - top);
  text += stroke_of(line);
  if (fill.count >= 3) {
    const double opacity = fill.count > 3 ? std::clamp(fill.value[3], 0.0, 100.0) : 100;
    text += text_of(" fill=\"%s\" fill-opacity=\"%g\"", fill.rgb().c_str(), opacity / 100);
  } else {
    text += " fill=\"none\"";
  }
  added.svg += text + "/>\n";
  const double half = line.count > 3 ? std::abs(line.value[3]) / 2 : 1;
  added.boxes.push_back({left - half, top - half, right + half, bottom + half});
}

void read_text(addition& added) {
  const double x = read_coordinate("text");
  const double y = read_coordinate("text");
  const color_code code = read_code();
  const std::string words = read_text_to_semicolon();
  if (words.size() > longest_added_text) error_end("Text to write too long (max. 1024)");
  const double size = code.count > 3 ? std::abs(code.value[3]) : 12;
  const double stroke = code.count > 4 ? std::abs(code.value[4]) : 1;
  const std::string color = code.count >= 3 ? code.rgb() : "black";
  added.svg += text_of(
                   "<text x=\"%g\" y=\"%g\" font-size=\"%g\" font-style=\"normal\" stroke=\"%s\""
                   " fill=\"%s\" stroke-width=\"%g\">",
                   x, y, size, color.c_str(), color.c_str(), stroke) +
               xml_text(words) + "</text>\n";
  added.boxes.push_back({x, y - size, x + svg_text_width(words, size), y + size / 4});
}

/// Copies the text up to ";" as it stands, ".," giving ";".
void read_copied_text(addition& added) {
  const comma_reading commas;
  commas.set_literal(true);
  std::string text;
  for (int c = read_char(); c != ';'; c = read_char()) {
    if (c == ',' && !text.empty() && text.back() == '.')
      text.back() = ';';
    else
      text += static_cast<char>(c);
  }
  unread_char();
  if (!text.empty() && text.front() == ' ') text.erase(0, 1);
  added.svg += text + "\n";
}

constexpr command_options rows = {
    form<read_copied_text>("write").argument("text").help("copies the text into the file"),
    form<read_text>("text").argument("x y (R,G,B,size:stroke) words").help("writes the words"),
    form<read_line>("line").argument("x1 y1 x2 y2 (R,G,B,width)").help("dashed with a negative R"),
    form<read_rectangle>("rect")
        .argument("x1 y1 x2 y2 (R,G,B,width) (R,G,B,opacity)")
        .help("outline and filling"),
};

}  // namespace

constexpr option_table addition_options =
    rows.table("ttags", {.unknown = expected_option, .no_word = expected_option});

void add_to_drawing() {
  if (!svg_file.file.is_open() || !svg_file.takes_additions)
    error_end(
        "To use \"ttag &+\" you must have saved coordinates\n(with xysave) in a previous call to "
        "\"ttag &\"");
  addition added;
  read_option(added, addition_options);
  option_table after_a_shape = addition_options;  // where the code of a colour may stand, too
  after_a_shape.errors = {.unknown = expected_color, .no_word = expected_color};
  while (skip_blanks_peek() != ';') read_option(added, after_a_shape);
  write_svg(added.svg);
  for (const auto& [left, top, right, bottom] : added.boxes) {
    grow_svg_page(left, top, right, bottom);
  }
}

}  // namespace zeb
