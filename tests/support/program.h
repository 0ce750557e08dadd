// Runs texts as the program would run them from a file, within the process of a test.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/arena.h"
#include "base/command.h"
#include "base/errors.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "start_up.h"
#include "support/captured_log.h"

namespace zeb_test {

/// Starts the program's state once a process: all rooms registered, no console, chatter off. Tests
/// with arenas of their own leave none: then there is a new one.
inline void start_program() {
  if (!zeb::arena.base) zeb::create_arena(16'000'000);
  static bool started = false;
  if (started) return;
  started = true;
  zeb::settings.beep = false;
  zeb::settings.report = false;
  if (!std::freopen("/dev/null", "r", stdin)) std::abort();
  zeb::start_input(10, "quote;", "tests");
  zeb::register_everything();
}

/// What `action` prints.
template <class function>
std::string printed_by(function&& action) {
  captured_log log;
  zeb::output.output_mask = zeb::no_console;
  action();
  zeb::output.output_mask = 0;
  return log.text();
}

/// Runs the commands of `text` as a file of its own, or the first of them; returns what they print,
/// errors included.
inline std::string run_program(std::string_view text, bool only_first = false) {
  start_program();
  char name[] = "/tmp/zeb_test_XXXXXX";
  const int descriptor = mkstemp(name);
  std::FILE* file = fdopen(descriptor, "wb");
  std::fwrite(text.data(), 1, text.size(), file);
  std::fclose(file);
  static std::string file_name;
  file_name = name;
  std::string result = printed_by([only_first] {
    zeb::interpreter.running = true;
    zeb::run_in_jump_context([] { zeb::push_file(file_name, {}); });
    while (zeb::interpreter.running && zeb::input.top > 0) {
      zeb::run_next();
      if (only_first) zeb::pop_all();
    }
  });
  std::remove(name);
  return result;
}

}  // namespace zeb_test
