// Texts cut into lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// A text in lines, at the separator; lines above `width` (if not 0) are broken, at a blank or
/// comma where there is one. Never empty.
std::vector<std::string> text_lines(std::string_view text, char separator, int width);
/// Sends a text in lines that the console shows whole, broken at blanks where there are any.
void emit_broken_at_blanks(std::string_view text);

}  // namespace zeb
