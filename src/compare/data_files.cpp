#include "compare/data_files.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "base/errors.h"
#include "language/command_strings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/script_text.h"
#include "matrix/matrix_layout.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

// `mxram` isn't among them: it would take away the memory that the running command stands on.
bool belongs_to_data(std::string_view name) {
  constexpr std::array<std::string_view, 22> commands = {
      "agroup",   "ancstates", "blocks",   "ccode",    "ckeep",     "cnames",  "costs",   "cstree",
      "fillsank", "nstates",   "hold",     "outgroup", "procedure", "smatrix", "taxcode", "taxname",
      "tgroup",   "tread",     "usminmax", "xgroup",   "xinact",    "xread"};
  return std::find(commands.begin(), commands.end(), name) != commands.end();
}

// A quote that comes first opens a title, not a macro reference.
bool reads_matrix() {
  const reading_flag plain(&macro_reading::no_expansion);
  const int c = skip_blanks_peek();
  return std::isdigit(c) || c == '\'';
}

// Quotes only where they are needed: the macro language expands what stands in them.
std::string command_to_read(const std::string& file) {
  const bool plain = file.find_first_of(" \t,;'$#%") == std::string::npos;
  return plain ? "procedure " + file + ";" : "procedure \"" + file + "\";";
}

// Drops the data that were read, also where an error cuts the reading short.
class dropped_data_scope {
 public:
  dropped_data_scope() = default;
  ~dropped_data_scope() {
    try {
      wipe_matrix();
    } catch (...) {  // what hangs on data that were just read can't be lost
    }
  }
  dropped_data_scope(const dropped_data_scope&) = delete;
  dropped_data_scope& operator=(const dropped_data_scope&) = delete;
};

}  // namespace

data_set read_data_file(const std::string& file) {
  if (access(file.c_str(), R_OK) != 0) error_end("Can't open input file", file);
  const data_settings_scope settings_of_session;
  wipe_matrix();
  const dropped_data_scope dropped;
  int matrices = 0;
  std::string last;
  run_command_string(command_to_read(file), [&](const command_row& row) {
    last = row.name;
    if (last == "xread" && reads_matrix() && ++matrices > 1)
      error_end("Only one data set per file allowed");
    return belongs_to_data(last);
  });
  if (matrices > 0 && last != "procedure")
    error_end("Unexpected EOF reading", file, "(missing \"proc/;\" at the end?)");
  data_set data;
  if (matrix.present) data = data_in_memory(file);
  data.file = file;
  data.word = word_of_file(file);
  return data;
}

void read_back(const std::string& file) {
  wipe_matrix();
  run_command_string(command_to_read(file),
                     [](const command_row& row) { return std::string_view(row.name) != "mxram"; });
}

}  // namespace zeb
