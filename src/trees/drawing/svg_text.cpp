#include "trees/drawing/svg_text.h"

#include <array>
#include <cstdint>

#include "base/text_columns.h"

namespace zeb {
namespace {

/// Advance widths of Verdana's characters 32 to 126, in thousandths of the font size.
constexpr std::array<std::uint16_t, 95> character_widths = {
    352,  394, 459, 818, 636, 1076, 727, 269, 454, 454, 636, 818, 364, 454, 364, 454,
    636,  636, 636, 636, 636, 636,  636, 636, 636, 636, 454, 454, 818, 818, 818, 545,
    1000, 684, 686, 698, 771, 632,  575, 775, 751, 421, 455, 693, 557, 843, 748, 787,
    603,  787, 695, 684, 616, 732,  684, 989, 685, 615, 685, 454, 454, 454, 818, 636,
    636,  601, 623, 521, 623, 596,  352, 623, 633, 274, 344, 592, 274, 973, 633, 607,
    623,  623, 427, 521, 394, 633,  592, 818, 592, 592, 525, 635, 454, 635, 818};
constexpr double latin_width = 0.75;  // other characters below U+2000, of the font size
constexpr double wide_width = 1.05;   // all others
constexpr double generosity = 1.06;

constexpr std::int32_t replacement = 0xfffd;

bool is_allowed_in_xml(std::int32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return !(c >= 0x7f && c < 0xa0) && c != 0xfffe && c != 0xffff;
}

/// Takes one character off the front. Bytes that are no UTF-8 stand for themselves.
std::int32_t take_character(std::string_view& text) {
  std::int32_t c = 0;
  text.remove_prefix(character_bytes(text, 0, &c));
  return is_allowed_in_xml(c) ? c : replacement;
}

}  // namespace

std::string xml_text(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::int32_t c = take_character(text);
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&apos;";
        break;
      default:
        append_character(out, c);
    }
  }
  return out;
}

double svg_text_width(std::string_view text, double font_size) {
  double width = 0;
  while (!text.empty()) {
    const std::int32_t c = take_character(text);
    if (c >= 32 && c < 127)
      width += character_widths[static_cast<std::size_t>(c) - 32] / 1000.0;
    else
      width += c < 0x2000 ? latin_width : wide_width;
  }
  return width * font_size * generosity;
}

}  // namespace zeb
