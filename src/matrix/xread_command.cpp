// `xread`: reads a matrix, writes it, edits its cells or makes data at random.
#include "matrix/commands.h"
#include "matrix/matrix.h"
#include "matrix/matrix_reader.h"
#include "shell/errors.h"
#include "shell/lexer.h"

namespace zeb {

void xread_command() {
  switch (skip_blanks_peek()) {
    case '*':
    case '-':
    case '[':
    case '!':
    case ':':
    case '=':
    case '/':
    case '+':
    case '>':
    case '<':
    case '&':
      error_end("This form of xread is not available yet");
    default:
      read_matrix();
  }
}

void xwipe_command() { wipe_matrix(); }

}  // namespace zeb
