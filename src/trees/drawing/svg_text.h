// Texts in SVG: escaping, and how wide they are.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// The text as character data of an XML document in UTF-8: markup characters become entities, bytes
/// that are no UTF-8 are taken as Latin-1, characters that XML doesn't allow become U+FFFD.
std::string xml_text(std::string_view text);

/// Width of the text in pixels at a font size, from the widths of Verdana's characters, on the
/// generous side: fonts put in its place are rarely wider.
double svg_text_width(std::string_view text, double font_size);

}  // namespace zeb
