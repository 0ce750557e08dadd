// Any text run as commands ends, and leaves the program able to go on.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "command_table.h"
#include "fuzz/scratch_folder.h"
#include "language/interpreter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// Without the commands that leave the program, wait, reach out of it, or close the log that the
// texts are caught in.
std::span<const zeb::command_row> harmless_rows() {
  static std::vector<zeb::command_row> rows;
  for (const zeb::command_row& row : zeb::all_commands()) {
    rows.push_back(row);
    for (const std::string_view name : {"quit", "zzz", "system", "bground", "slaveproc", "pause",
                                        "cdir", "view", "mxram", "log"}) {
      if (name == row.name) rows.back().handler = nullptr;
    }
  }
  return rows;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  zeb_test::start_in_scratch_folder(harmless_rows);
  if (size > 4000) return 0;
  zeb_test::run_program("timeout 1; macro-;", false);
  zeb_test::run_program({reinterpret_cast<const char*>(data), size});
  if (zeb_test::run_program("quote alive;").find("alive") == std::string::npos) std::abort();
  return 0;
}
