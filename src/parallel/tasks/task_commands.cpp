// `tagset`: where a script is, for the parent and for jumps that it asks for.
#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "parallel/commands.h"
#include "parallel/tasks/task_state.h"

namespace zeb {

void tagset_command() {
  no_timing();
  double tag = 0;
  if (!read_optional_whole(&tag) || tag < 0 || tag > 1e9) error_end("Must give a tag");
  expect_end();
  set_task_tag(static_cast<int>(tag));
  if (settings.report) emit(text_of("P-ZEB: setting tag = %i\n", static_cast<int>(tag)));
}

}  // namespace zeb
