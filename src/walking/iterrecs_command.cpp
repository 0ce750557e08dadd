// `iterrecs`: a piece of script for each most parsimonious reconstruction of a character.
#include "base/errors.h"
#include "macro/body_record.h"
#include "macro/macro_language.h"
#include "walking/commands.h"
#include "walking/walk_nesting.h"

namespace zeb {

void iterrecs_command() {
  require_macros();
  if (accept_walk_limit(body_kind::iterrecs)) return;
  check_walk_nesting(body_kind::iterrecs);
  error_end("Command \"iterrecs\" is not available yet");
}

void killrecs_command() { end_walk(body_kind::iterrecs); }

void endrecs_command() { unmatched_closing_word("iterrecs"); }

}  // namespace zeb
