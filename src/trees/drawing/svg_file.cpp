#include "trees/drawing/svg_file.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/message_text.h"
#include "trees/drawing/svg_text.h"

namespace zeb {

svg_file_state svg_file;

namespace {

constexpr double margin = 20;            // pixels around the drawing
constexpr std::size_t head_width = 220;  // bytes of the element that gives the size, padded
constexpr std::size_t longest_name = 159;

/// The size isn't known before the drawing is closed, so its element has a fixed width in bytes and
/// is written again at the end. It stays a whole document's start at any moment.
std::string svg_element() {
  const double left = std::floor(svg_file.left - margin);
  const double top = std::floor(svg_file.top - margin);
  const int width = std::max(1, static_cast<int>(std::ceil(svg_file.right + margin - left)));
  const int height = std::max(1, static_cast<int>(std::ceil(svg_file.bottom + margin - top)));
  const int x = static_cast<int>(left);
  const int y = static_cast<int>(top);
  std::string text = text_of(
      "<svg width=\"%i\" height=\"%i\" viewBox=\"%i %i %i %i\""
      " xmlns=\"http://www.w3.org/2000/svg\">"
      "<rect x=\"%i\" y=\"%i\" width=\"%i\" height=\"%i\" fill=\"white\"/>",
      width, height, x, y, width, height, x, y, width, height);
  text.resize(std::max(text.size(), head_width), ' ');
  text += '\n';
  return text;
}

constexpr std::string_view xml_declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

}  // namespace

void open_svg_file(const std::string& name, std::string_view title) {
  close_svg_file();
  svg_file.stream = name.size() > longest_name ? nullptr : std::fopen(name.c_str(), "wb");
  if (!svg_file.stream) error_end("Cannot open file", name);
  svg_file.name = name;
  svg_file.left = svg_file.top = 0;
  svg_file.right = svg_file.bottom = 0;
  svg_file.takes_additions = false;
  write_svg(xml_declaration);
  write_svg(svg_element());
  if (!title.empty()) write_svg("<title>" + xml_text(title) + "</title>\n");
  write_svg(
      "<defs><filter id=\"white_background\" x=\"-0.04\" y=\"0\" width=\"1.08\" height=\"1\" "
      "color-interpolation-filters=\"sRGB\">"
      "<feFlood flood-color=\"white\"/><feComposite in=\"SourceGraphic\"/></filter></defs>\n");
}

void write_svg(std::string_view text) {
  if (svg_file.stream) std::fwrite(text.data(), 1, text.size(), svg_file.stream);
}

void grow_svg_page(double left, double top, double right, double bottom) {
  svg_file.left = std::min(svg_file.left, left);
  svg_file.top = std::min(svg_file.top, top);
  svg_file.right = std::max(svg_file.right, right);
  svg_file.bottom = std::max(svg_file.bottom, bottom);
}

void let_svg_file_take_additions() { svg_file.takes_additions = true; }

bool close_svg_file() {
  if (!svg_file.stream) return true;
  write_svg("</g>\n</svg>\n");
  // What can't be wound back, as a pipe, keeps the size it began with.
  if (std::fseek(svg_file.stream, static_cast<long>(xml_declaration.size()), SEEK_SET) == 0) {
    write_svg(svg_element());
  }
  const bool good = std::ferror(svg_file.stream) == 0;
  const bool closed = std::fclose(svg_file.stream) == 0;
  svg_file.stream = nullptr;
  svg_file.takes_additions = false;
  return good && closed;
}

}  // namespace zeb
