#include "matrix/matrix_memory.h"

#include <unistd.h>

#include <algorithm>

#include "base/arena.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/commands/memory_command.h"
#include "language/lexer.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

// Bytes of the machine's memory.
double machine_memory() {
  return static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGE_SIZE));
}

}  // namespace

double matrix_memory_estimate(int ntax, int nchar) {
  const double n = nchar;
  const double t = ntax;
  const double v = 2 * t - 1;
  const double name = lexer.name_limit;
  constexpr double tag_size = 128;
  const double records = 112 * n + 96 * name;
  const double rows = records + 24 * v + n * t * matrix.cell_bytes;
  const double nodes = v + name * t + 512 + tag_size * v + 4 * (19 * v + 2 * (2 * name * v + t));
  return 1.25 * (rows + nodes);
}

void make_room_for_matrix(int ntax, int nchar, bool tell) {
  const double estimate = matrix_memory_estimate(ntax, nchar) * memory.data_proportion;
  if (settings.report && tell) {
    emit("Matrix (", ntax, " taxa, ", nchar, " chars., ", 8 * matrix.cell_bytes,
         " states). Memory required for data: ", megabytes_text(estimate), "\n");
    if (memory.data_proportion != 1) {
      emitf("N.B.: allocating no less than %.2f of expected RAM", memory.data_proportion);
    }
  }
  // Refused before the system is asked: it may promise memory that it doesn't have.
  const double usable = 0.75 * machine_memory();
  if (estimate > usable) out_of_memory();
  // Four times the estimate leaves room for trees and searches.
  const double wanted = std::min(4 * estimate, usable);
  if (!memory.grow_for_data || static_cast<double>(arena_free()) >= wanted) return;
  unlock_all();
  create_arena(static_cast<std::size_t>(wanted));
}

}  // namespace zeb
