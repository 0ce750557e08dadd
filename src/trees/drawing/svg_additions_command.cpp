// ttags &+: lines, rectangles and texts added to a drawing that was left open.
#include <algorithm>
#include <cctype>
#include <cmath>

#include "base/errors.h"
#include "base/message_text.h"
#include "language/input.h"
#include "language/lexer.h"
#include "trees/drawing/branch_style.h"
#include "trees/drawing/command_text.h"
#include "trees/drawing/display.h"
#include "trees/drawing/svg_commands.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_text.h"

namespace zeb {
namespace {

constexpr std::size_t longest_added_text = 1024;
constexpr std::size_t longest_code = 255;
constexpr double farthest = 1e6;  // pixels from the page's corner

constexpr const char* expected_option =
    "Expected option (\"write\", \"line\" , \"text\", \"rect\")";

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
    if (c == ';') error_end("Indicate color in parentheses (as for tags)");
    text += static_cast<char>(c);
    if (text.size() > longest_code) error_end("Color code too long (max. 255 characters)");
  }
  code = read_color_code(text);
  if (code.count < 3) error_end("Indicate color in parentheses (as for tags)");
  return code;
}

/// The word of an option; empty where something else comes.
std::string read_option_word() {
  if (read_word() == 0) return {};
  const std::string word(token());
  for (const char* option : {"write", "text", "line", "rect"}) {
    if (is_prefix(word, option)) return option;
  }
  return {};
}

/// Behind the coordinates of a line or rectangle come codes, a further option or the end.
color_code read_code_of_shape() {
  const int c = skip_blanks_peek();
  if (c != '(' && c != ';' && !std::isalpha(c)) {
    error_end("Indicate color in parentheses (as for tags)");
  }
  return read_code();
}

/// The option behind a line or rectangle, read before the shape is drawn; empty at the end.
std::string read_next_option() {
  if (skip_blanks_peek() == ';') return {};
  std::string next = read_option_word();
  if (next.empty()) error_end("Indicate color in parentheses (as for tags)");
  return next;
}

std::string stroke_of(const color_code& code) {
  const double width = code.count > 3 ? std::abs(code.value[3]) : 1;
  std::string text = text_of(" stroke=\"%s\" stroke-width=\"%g\"",
                             code.count >= 3 ? code.rgb().c_str() : "black", width);
  if (code.count >= 3 && code.value[0] < 0) text += " stroke-dasharray=\"6,4\"";
  return text;
}

std::string add_line() {
  double place[4];
  for (double& v : place) v = read_coordinate("line");
  const color_code code = read_code_of_shape();
  const std::string next = read_next_option();
  write_svg(text_of("<line x1=\"%g\" y1=\"%g\" x2=\"%g\" y2=\"%g\"", place[0], place[1], place[2],
                    place[3]) +
            stroke_of(code) + "/>\n");
  const double half = code.count > 3 ? std::abs(code.value[3]) / 2 : 1;
  grow_svg_page(std::min(place[0], place[2]) - half, std::min(place[1], place[3]) - half,
                std::max(place[0], place[2]) + half, std::max(place[1], place[3]) + half);
  return next;
}

std::string add_rectangle() {
  double place[4];
  for (double& v : place) v = read_coordinate("rect");
  const color_code line = read_code_of_shape();
  const color_code fill = read_code_of_shape();
  const std::string next = read_next_option();
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
  write_svg(text + "/>\n");
  const double half = line.count > 3 ? std::abs(line.value[3]) / 2 : 1;
  grow_svg_page(left - half, top - half, right + half, bottom + half);
  return next;
}

void add_text() {
  const double x = read_coordinate("text");
  const double y = read_coordinate("text");
  const color_code code = read_code();
  const std::string words = read_text_to_semicolon();
  if (words.size() > longest_added_text) error_end("Text to write too long (max. 1024)");
  const double size = code.count > 3 ? std::abs(code.value[3]) : 12;
  const double stroke = code.count > 4 ? std::abs(code.value[4]) : 1;
  const std::string color = code.count >= 3 ? code.rgb() : "black";
  write_svg(text_of("<text x=\"%g\" y=\"%g\" font-size=\"%g\" font-style=\"normal\" stroke=\"%s\""
                    " fill=\"%s\" stroke-width=\"%g\">",
                    x, y, size, color.c_str(), color.c_str(), stroke) +
            xml_text(words) + "</text>\n");
  grow_svg_page(x, y - size, x + svg_text_width(words, size), y + size / 4);
}

/// Copies the text up to ";" as it stands, ".," giving ";".
void copy_text() {
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
  write_svg(text + "\n");
}

}  // namespace

void add_to_drawing() {
  if (!svg_file.stream || !svg_file.takes_additions)
    error_end(
        "To use \"ttag &+\" you must have saved coordinates\n(with xysave) in a previous call to "
        "\"ttag &\"");
  std::string option = read_option_word();
  if (option.empty()) error_end(expected_option);
  while (!option.empty()) {
    if (option == "write") return copy_text();
    if (option == "text") return add_text();
    option = option == "line" ? add_line() : add_rectangle();
  }
}

}  // namespace zeb
