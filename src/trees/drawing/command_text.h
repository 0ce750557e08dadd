// Free text in commands, and long texts in the output.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// The text up to ";" (unread), without the blanks around it; line ends become blanks. A comma in
/// parentheses, as in the code of a colour, belongs to the text wherever it was typed.
std::string read_text_to_semicolon();
/// Sends a text in lines that the console shows whole, broken at blanks where there are any.
void emit_broken_at_blanks(std::string_view text);

}  // namespace zeb
