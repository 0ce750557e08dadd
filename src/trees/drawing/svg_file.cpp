#include "trees/drawing/svg_file.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/process.h"
#include "trees/drawing/svg_text.h"

namespace zeb {

svg_file_state svg_file;

namespace {

constexpr double margin = 20;  // pixels around the drawing
constexpr std::size_t longest_name = 159;

std::string svg_element() {
  const double left = std::floor(svg_file.left - margin);
  const double top = std::floor(svg_file.top - margin);
  const int width = std::max(1, static_cast<int>(std::ceil(svg_file.right + margin - left)));
  const int height = std::max(1, static_cast<int>(std::ceil(svg_file.bottom + margin - top)));
  const int x = static_cast<int>(left);
  const int y = static_cast<int>(top);
  return text_of(
      "<svg width=\"%i\" height=\"%i\" viewBox=\"%i %i %i %i\""
      " xmlns=\"http://www.w3.org/2000/svg\">"
      "<rect x=\"%i\" y=\"%i\" width=\"%i\" height=\"%i\" fill=\"white\"/>\n",
      width, height, x, y, width, height, x, y, width, height);
}

constexpr std::string_view xml_declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// A drawing that additions were to come to is whole; one that an error ended isn't.
void finish_former() {
  if (!svg_file.takes_additions) return svg_file.file.discard();
  const std::string name = svg_file.file.name();
  if (!close_svg_file()) error_end("Cannot write to file", name + svg_file.file.cause());
}

}  // namespace

void open_svg_file(const std::string& name, std::string_view title) {
  finish_former();
  if (name.size() > longest_name) error_end("Cannot open file", name);
  if (!svg_file.file.create(name)) error_end("Cannot open file", name + svg_file.file.cause());
  svg_file.drawn.clear();
  svg_file.left = svg_file.top = 0;
  svg_file.right = svg_file.bottom = 0;
  svg_file.takes_additions = false;
  if (!title.empty()) write_svg("<title>" + xml_text(title) + "</title>\n");
  write_svg(
      "<defs><filter id=\"white_background\" x=\"-0.04\" y=\"0\" width=\"1.08\" height=\"1\" "
      "color-interpolation-filters=\"sRGB\">"
      "<feFlood flood-color=\"white\"/><feComposite in=\"SourceGraphic\"/></filter></defs>\n");
}

void write_svg(std::string_view text) {
  if (svg_file.file.is_open()) svg_file.drawn += text;
}

void grow_svg_page(double left, double top, double right, double bottom) {
  svg_file.left = std::min(svg_file.left, left);
  svg_file.top = std::min(svg_file.top, top);
  svg_file.right = std::max(svg_file.right, right);
  svg_file.bottom = std::max(svg_file.bottom, bottom);
}

void let_svg_file_take_additions() { svg_file.takes_additions = true; }

void abandon_svg_file() {
  if (!svg_file.takes_additions) return svg_file.file.discard();
  if (!close_svg_file())
    note_loss("Cannot write to file " + svg_file.file.name() + svg_file.file.cause());
}

bool close_svg_file() {
  if (!svg_file.file.is_open()) return true;
  svg_file.file.put(xml_declaration);
  svg_file.file.put(svg_element());
  svg_file.file.put(svg_file.drawn);
  svg_file.file.put("</g>\n</svg>\n");
  svg_file.drawn.clear();
  svg_file.takes_additions = false;
  return svg_file.file.close();
}

}  // namespace zeb
