#include "language/commands/memory_command.h"

#include "base/arena.h"
#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/commands/commands.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"

namespace zeb {

memory_settings memory;

namespace {

constexpr double largest_megabytes = 1e12;

void show_part(const int* tag, const std::string& what) {
  const std::size_t bytes = locked_bytes(tag);
  if (bytes == 0) return;
  emit("      ", megabytes_text(static_cast<double>(bytes)), what, "\n");
}

void show_breakdown() {
  emit("   ", megabytes_text(static_cast<double>(arena_free())), " unused\n");
  emit("   ", megabytes_text(static_cast<double>(arena_in_use())), " in use:\n");
  const data_description data =
      hooks_of_language.describe_data ? hooks_of_language.describe_data() : data_description{};
  std::string matrix = text_of(" for data matrix (%i taxa, %i chars., %i states) for %i trees",
                               data.ntax, data.nchar, data.nstates, data.maxtrees);
  if (data.vault_trees > 0) matrix += text_of(" (plus vault of %i trees)", data.vault_trees);
  show_part(&locks.matrix_lock, matrix);
  show_part(&locks.tree_lock, text_of(" for %i trees", data.maxtrees));
  show_part(&locks.optimisation_lock, " for tree optimization");
  show_part(&locks.search_lock, " for tree searches");
  show_part(&locks.constraints_lock, " for constraint definitions");
  show_part(&locks.character_names_lock, " for character names");
  if (data.label_bytes > 0)
    emit("   ", megabytes_text(static_cast<double>(data.label_bytes)),
         " more for labels and lengths of trees\n");
}

void show_memory() {
  emit("ZEB - max. ram = ", megabytes_text(static_cast<double>(arena.size)), "\n");
  if (arena.lock_count == 0) {
    emit("No ram used yet\n");
  } else {
    show_breakdown();
  }
}

void resize(double megabytes) {
  if (megabytes < 0 || megabytes > largest_megabytes) {
    error_end("Size of memory is given in Mbytes, from 0 on");
  }
  expect_end();
  if (data_in_memory()) {
    warning("Re-setting RAM will discard current data (and trees)");
    if (hooks_of_language.drop_data) hooks_of_language.drop_data();
  }
  unlock_all();
  create_arena(static_cast<std::size_t>(megabytes * 1e6) + 16);
  if (settings.report) show_memory();
}

void set_proportion() {
  double proportion = 0;
  if (!read_optional_float(&proportion) || proportion <= 0) {
    error_end("Specify proportion of expected RAM (can't be zero!)");
  }
  expect_end();
  memory.data_proportion = proportion;
  if (settings.report && proportion != 1) {
    emitf("N.B.: allocating no less than %.2f of expected RAM", proportion);
  }
}

void set_growth(bool on) {
  expect_end();
  memory.grow_for_data = on;
  if (settings.report) {
    emit(on ? "If needed, " : "Never ", "increasing memory when reading a dataset\n");
  }
}

void set_extra(bool on) {
  expect_end();
  memory.extra_for_searches = on;
  if (settings.report) {
    report_line(on ? "Minimum extra memory for searches is 5%" : "No extra memory for searches");
  }
}

}  // namespace

void mxram_command() {
  no_timing();
  double megabytes = 0;
  const int sign = next_nonblank();
  switch (sign) {
    case ';':
      return show_memory();
    case '*':
      return set_proportion();
    case '[':
      return set_growth(true);
    case ']':
      return set_growth(false);
    case '+':
      return set_extra(true);
    case '-':
      return set_extra(false);
    default:
      break;
  }
  unread_char();
  if (!read_optional_float(&megabytes)) {
    error_end("Wrong argument for mxram:", static_cast<char>(sign));
  }
  resize(megabytes);
}

}  // namespace zeb
