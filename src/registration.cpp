#include "registration.h"

#include "command_table.h"
#include "engine/registration.h"
#include "formats/formats.h"
#include "functions/function_table.h"
#include "macro/commands.h"
#include "matrix/list_kinds.h"
#include "matrix/matrix.h"
#include "shell/interpreter.h"
#include "trees/registration.h"

namespace zeb {

void register_everything() {
  set_command_table(all_commands());
  register_macros();
  register_functions();
  register_formats();
  register_matrix();
  register_matrix_lists();
  register_trees();
  register_engine();
}

}  // namespace zeb
