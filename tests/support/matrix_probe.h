// What must hold whatever text `xread` is given.
#pragma once

#include <cctype>
#include <cstdlib>
#include <string>
#include <string_view>

#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "support/program.h"

namespace zeb_test {

inline std::string cells_and_names() {
  std::string text;
  for (int t = 0; t < zeb::matrix.ntax; ++t) {
    text += std::string(zeb::taxon_name(t)) + ":";
    for (int c = 0; c < zeb::matrix.nchar; ++c) text += " " + std::to_string(zeb::cell(t, c));
    text += "\n";
  }
  return text;
}

/// Numbers that ask for much memory are legal, but slow to try.
inline bool asks_for_much(std::string_view text) {
  int digits = 0;
  for (const char c : text) {
    digits = std::isdigit(static_cast<unsigned char>(c)) ? digits + 1 : 0;
    if (digits > 3) return true;
  }
  return false;
}

/// Runs "nstates N; xread" with `text` after it. Either there are no data afterwards, or what
/// `xread *` writes of them reads back the same. Aborts otherwise. Nothing stays in the arena.
/// Returns whether there were data.
inline bool probe_matrix_reader(std::string_view text, const char* settings) {
  start_program();
  zeb::wipe_matrix();
  run_program(settings);
  run_program("xread " + std::string(text), true);
  const bool read = zeb::matrix.present;
  if (read) {
    const std::string before = cells_and_names();
    const std::string written = run_program("xread *;");
    zeb::wipe_matrix();
    const std::string said = run_program(written);
    if (!zeb::matrix.present || cells_and_names() != before) {
      std::fprintf(stderr, "not the same:\n%s\n%s\n", written.c_str(), said.c_str());
      std::abort();
    }
  }
  zeb::wipe_matrix();
  if (zeb::matrix.ntax != 0 || zeb::arena.lock_count != 0 || zeb::arena_in_use() > 16) {
    std::fprintf(stderr, "%zu bytes left, %i locks\n", zeb::arena_in_use(), zeb::arena.lock_count);
    std::abort();
  }
  return read;
}

}  // namespace zeb_test
