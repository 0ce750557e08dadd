#include "macro/stored_text.h"

#include <cctype>

#include "base/errors.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/macro_reader.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"

namespace zeb {

std::string read_stored_text() {
  const reading_flag quotes(&macro_reading::no_quotes);
  // A "$" at the head opened the text; further ones convert as usual.
  const reading_flag strings(&macro_reading::no_strings, false);
  const literal_commas commas;

  std::string text;
  bool blank = false;
  const std::size_t room = static_cast<std::size_t>(macros.max_variables) * 8;
  for (;;) {
    int c = read_char();
    if (c == ';') break;
    if (c < 33) {
      if (!blank) text += ' ';
      blank = true;
      if (input_ended() && input.top == 0) break;
      continue;
    }
    blank = false;
    if (c == '.' && peek_raw_char() == ',') {
      read_raw_char();
      c = ';';
    } else if (c == '&' && std::isdigit(peek_raw_char())) {
      int code = 0;
      while (std::isdigit(peek_raw_char()))
        code = code < 1000 ? code * 10 + (read_raw_char() - '0') : read_raw_char();
      c = code & 255;
    }
    if (text.size() < room) text += static_cast<char>(c);
  }
  return text;
}

}  // namespace zeb
