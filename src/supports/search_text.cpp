#include "supports/search_text.h"

#include "base/errors.h"
#include "language/command_strings.h"
#include "language/input.h"
#include "language/lexer.h"

namespace zeb {

std::string read_bracketed_search(const char* missing) {
  next_nonblank();
  std::string text;
  for (int open = 1;;) {
    if (input_ended()) error_end(missing);
    const int c = read_char();
    if (c == '[') ++open;
    if (c == ']' && --open == 0) break;
    text += static_cast<char>(c < 32 ? ' ' : c);
  }
  const std::size_t first = text.find_first_not_of(" ;");
  if (first == text.npos) return {};
  text = text.substr(first, text.find_last_not_of(' ') + 1 - first);
  if (text.back() != ';') text += ';';
  check_command_string(text);
  return text;
}

}  // namespace zeb
