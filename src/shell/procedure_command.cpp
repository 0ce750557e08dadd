#include "shell/commands.h"
#include "shell/errors.h"
#include "shell/input.h"
#include "shell/interpreter.h"
#include "shell/lexer.h"

namespace zeb {

void procedure_command() {
  const int c = skip_blanks_peek();
  if (c == ';' || c == '-' || c == '/') {
    if (c != ';') read_char();
    no_timing();
    pop_frame();
    return;
  }
  read_item();
  push_file(std::string(token()), {});
}

void run_file_command() { push_file(std::string(token()), {}); }

}  // namespace zeb
