// Long texts in the output.
#pragma once

#include <string_view>

namespace zeb {

/// Sends a text in lines that the console shows whole, broken at blanks where there are any.
void emit_broken_at_blanks(std::string_view text);

}  // namespace zeb
