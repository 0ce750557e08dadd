// `if`, `else`, `end`, `xend`: branches skip text, they don't parse it.
#include <cctype>
#include <cmath>
#include <string>
#include <string_view>

#include "base/errors.h"
#include "console/output.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/block_text.h"
#include "macro/commands.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"

namespace zeb {

void if_command() {
  require_macros();
  if (!accept_char('(')) error_end("Use if( condition ) ...actions... end");
  std::string echo;
  const double value = evaluate(expression_end::parenthesis, macros.report ? &echo : nullptr);
  const bool holds = std::trunc(value) != 0;
  if (macros.report) emitf("IF %s ---> %s", echo.c_str(), holds ? "TRUE" : "FALSE!");
  if (holds) return;
  if (input.top == 0 && macros.level < 0) report_line("Condition not fullfilled");
  skip_block();
}

void else_command() {
  require_macros();
  skip_block();
}

void end_command() { require_macros(); }

void xend_command() { require_macros(); }

}  // namespace zeb
