#include "shell/commands.h"
#include "shell/errors.h"
#include "shell/input.h"
#include "shell/interpreter.h"
#include "shell/output.h"
#include "shell/process.h"

namespace zeb {

void quote_command() {
  input.literal_comma = true;
  int c = read_char();
  if (c < 33) c = read_char();
  std::string text;
  for (; c != ';'; c = read_char()) {
    if (c == ',' && !text.empty() && text.back() == '.') {
      text.back() = ';';
    } else {
      text += static_cast<char>(c);
    }
  }
  input.literal_comma = false;
  emit(text, "\n");
}

}  // namespace zeb
