#include "start_up.h"

#include "command_table.h"
#include "consensus/registration.h"
#include "console/registration.h"
#include "engine/registration.h"
#include "formats/registration.h"
#include "functions/registration.h"
#include "landmarks/registration.h"
#include "language/commands/memory_command.h"
#include "language/hooks.h"
#include "language/interpreter.h"
#include "language/registration.h"
#include "macro/registration.h"
#include "mapping/registration.h"
#include "matrix/matrix.h"
#include "matrix/registration.h"
#include "parallel/registration.h"
#include "search/registration.h"
#include "supports/registration.h"
#include "taxonomy/registration.h"
#include "trees/branch_labels.h"
#include "trees/registration.h"
#include "trees/tree_store.h"
#include "walking/registration.h"

namespace zeb {

namespace {

data_description describe_data() {
  return {matrix.ntax,    matrix.nchar,         8 * matrix.cell_bytes,
          store.maxtrees, store.vault.maxtrees, label_memory.bytes};
}

}  // namespace

void register_everything() {
  register_console();
  register_language();
  set_command_table(all_commands());
  register_macro();
  register_functions();
  register_formats();
  register_matrix();
  register_trees();
  register_engine();
  register_landmarks();
  register_search();
  hooks_of_language.describe_data = describe_data;
  register_mapping();
  register_consensus();
  register_supports();
  register_taxonomy();
  register_walking();
  register_parallel();
}

}  // namespace zeb
