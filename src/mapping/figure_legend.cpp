#include "mapping/figure_legend.h"

#include <algorithm>
#include <cmath>

#include "base/message_text.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_text.h"

namespace zeb {
namespace {

// Differ in lightness as well as in hue, for those who tell few hues and for gray print. No black
// and no yellow: the one looks like a branch without a colour, the other is hard to see as a line.
constexpr figure_color palette[] = {
    {0, 114, 178},  {213, 94, 0},  {0, 158, 115}, {204, 121, 167}, {230, 159, 0},
    {86, 180, 233}, {51, 34, 136}, {136, 34, 85}, {153, 153, 51},  {120, 80, 40},
};

int part(double v) { return static_cast<int>(std::lround(255 * std::clamp(v, 0.0, 1.0))); }

/// Hue from 0 to 1 at a middle lightness.
figure_color color_of_hue(double hue) {
  const auto channel = [&](double shift) {
    const double h = std::fmod(hue + shift, 1.0) * 6;
    return 0.15 + 0.6 * std::clamp(std::abs(h - 3) - 1, 0.0, 1.0);
  };
  return {part(channel(0)), part(channel(2.0 / 3)), part(channel(1.0 / 3))};
}

constexpr figure_color gradient[] = {
    {68, 1, 84}, {59, 82, 139}, {33, 145, 140}, {94, 201, 98}, {253, 231, 37}};
constexpr int gradient_steps = 4;

int pixel(double v) { return static_cast<int>(std::lround(v)); }

constexpr double sample_width = 26;

void write_line(double left, double middle, const legend_entry& entry, int thickness) {
  const char* dashes =
      entry.kind == legend_entry::sample::dashed_line ? " stroke-dasharray=\"6,4\"" : "";
  write_svg(
      text_of("<line x1=\"%i\" y1=\"%i\" x2=\"%i\" y2=\"%i\" stroke=\"%s\""
              " stroke-width=\"%i\"%s/>\n",
              pixel(left), pixel(middle), pixel(left + sample_width), pixel(middle),
              entry.color.as_svg().c_str(), thickness, dashes));
}

void write_box(double left, double top, double width, double height, const std::string& fill,
               const std::string& outline) {
  write_svg(
      text_of("<rect x=\"%i\" y=\"%i\" width=\"%i\" height=\"%i\" fill=\"%s\""
              " stroke=\"%s\" stroke-width=\"1\"/>\n",
              pixel(left), pixel(top), pixel(width), pixel(height), fill.c_str(), outline.c_str()));
}

void write_gradient(double left, double top, double height) {
  write_svg("<defs><linearGradient id=\"values\">");
  for (int i = 0; i <= gradient_steps; ++i)
    write_svg(text_of("<stop offset=\"%i%%\" stop-color=\"%s\"/>", 100 * i / gradient_steps,
                      gradient[i].as_svg().c_str()));
  write_svg("</linearGradient></defs>\n");
  write_box(left, top, 4 * sample_width, height, "url(#values)", "none");
}

/// Width of the sample.
double write_sample(const legend_entry& entry, double left, double middle,
                    const svg_options& options) {
  const double side = std::round(options.terminal_font * 0.8);
  switch (entry.kind) {
    case legend_entry::sample::none:
      return 0;
    case legend_entry::sample::line:
    case legend_entry::sample::dashed_line:
      write_line(left, middle, entry, std::max(options.thickness, 1));
      return sample_width;
    case legend_entry::sample::filled_box:
      write_box(left, middle - side / 2, side, side, entry.color.as_svg(), "black");
      return side;
    case legend_entry::sample::open_box:
      write_box(left, middle - side / 2, side, side, "white", "black");
      return side;
    case legend_entry::sample::gradient:
      write_gradient(left, middle - side / 2, side);
      return 4 * sample_width;
  }
  return 0;
}

void write_words(double left, double base, const std::string& words, int font_size,
                 const char* attributes) {
  write_svg(text_of("<text x=\"%i\" y=\"%i\" font-size=\"%i\" font-style=\"normal\"%s>",
                    pixel(left), pixel(base), font_size, attributes));
  write_svg(xml_text(words) + "</text>\n");
  grow_svg_page(left, base - font_size, left + svg_text_width(words, font_size) * 1.1,
                base + font_size * 0.4);
}

}  // namespace

std::string figure_color::as_tag() const { return text_of("(%i,%i,%i)", red, green, blue); }
std::string figure_color::as_svg() const { return text_of("rgb(%i,%i,%i)", red, green, blue); }

figure_color color_of_state(std::size_t number) {
  if (number < std::size(palette)) return palette[number];
  constexpr double golden_part = 0.61803398875;
  return color_of_hue(std::fmod(static_cast<double>(number) * golden_part, 1.0));
}

figure_color color_of_fraction(double fraction) {
  const double place = std::clamp(fraction, 0.0, 1.0) * gradient_steps;
  const int step = std::min(static_cast<int>(place), gradient_steps - 1);
  const figure_color& from = gradient[step];
  const figure_color& to = gradient[step + 1];
  const auto mix = [&](int a, int b) {
    return static_cast<int>(std::lround(a + (b - a) * (place - step)));
  };
  return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue)};
}

void write_legend(const std::string& heading, const std::vector<legend_entry>& entries,
                  const svg_options& options) {
  const int size = options.terminal_font;
  const double step = std::ceil(size * 1.6);
  const double left = options.shift;
  double base = svg_file.bottom + 1.8 * step;
  write_words(left, base, heading, size, " font-weight=\"bold\"");
  for (const legend_entry& entry : entries) {
    base += step;
    const double width = write_sample(entry, left, base - size * 0.36, options);
    write_words(left + (width > 0 ? width + 8 : 0), base, entry.text, size, "");
  }
}

}  // namespace zeb
