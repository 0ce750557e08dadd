// How targets that run whole commands begin.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <span>

#include "language/interpreter.h"
#include "support/program.h"

namespace zeb_test {

/// Once a process: the program, with the commands of `rows` only, in a folder of its own, where
/// what the texts write does no harm.
inline void start_in_scratch_folder(std::span<const zeb::command_row> (*rows)()) {
  static bool started = false;
  if (started) return;
  started = true;
  char folder[] = "/tmp/zeb_fuzz_XXXXXX";
  if (!mkdtemp(folder) || chdir(folder) != 0) std::abort();
  start_program();
  zeb::set_command_table(rows());
}

}  // namespace zeb_test
