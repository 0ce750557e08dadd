#include "trees/drawing/svg_text.h"

#include <array>
#include <cstdint>

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

constexpr std::uint32_t replacement = 0xfffd;

bool is_allowed_in_xml(std::uint32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return !(c >= 0x7f && c < 0xa0) && !(c >= 0xd800 && c < 0xe000) && c != 0xfffe && c != 0xffff &&
         c <= 0x10ffff;
}

/// Takes one character off the front. Overlong forms and stray bytes stand for themselves.
std::uint32_t take_character(std::string_view& text) {
  const auto byte = [&](std::size_t i) -> std::uint32_t {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
  };
  const std::uint32_t first = byte(0);
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : first >= 0xc0 ? 2 : 1;
  constexpr std::array<std::uint32_t, 5> least = {0, 0, 0x80, 0x800, 0x10000};
  if (length > 1 && first < 0xf8) {
    std::uint32_t c = first & (0xffU >> (length + 1));
    bool is_sequence = true;
    for (std::size_t i = 1; i < length; ++i) {
      is_sequence = is_sequence && (byte(i) & 0xc0) == 0x80;
      c = (c << 6) | (byte(i) & 0x3f);
    }
    if (is_sequence && c >= least[length]) {
      text.remove_prefix(length);
      return is_allowed_in_xml(c) ? c : replacement;
    }
  }
  text.remove_prefix(1);
  return is_allowed_in_xml(first) ? first : replacement;
}

void append_utf8(std::string& out, std::uint32_t c) {
  const auto tail = [&](unsigned shift) { out += static_cast<char>(0x80 | ((c >> shift) & 0x3f)); };
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xc0 | (c >> 6));
    tail(0);
  } else if (c < 0x10000) {
    out += static_cast<char>(0xe0 | (c >> 12));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xf0 | (c >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace

std::string xml_text(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::uint32_t c = take_character(text);
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
        append_utf8(out, c);
    }
  }
  return out;
}

double svg_text_width(std::string_view text, double font_size) {
  double width = 0;
  while (!text.empty()) {
    const std::uint32_t c = take_character(text);
    if (c >= 32 && c < 127)
      width += character_widths[c - 32] / 1000.0;
    else
      width += c < 0x2000 ? latin_width : wide_width;
  }
  return width * font_size * generosity;
}

}  // namespace zeb
