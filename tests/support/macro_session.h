// The macro language on, with a text to read, for tests below the commands.
#pragma once

#include <cstring>
#include <string>
#include <string_view>

#include "base/command.h"
#include "language/input.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/variables.h"
#include "program.h"

namespace zeb_test {

/// The language is on as long as the object lives, with `protection` 0 to 2. One at a time.
class macro_session {
 public:
  explicit macro_session(int protection = 2) : before_(zeb::macros.protection) {
    start_program();
    zeb::macros.protection = protection;
    zeb::start_macros();
  }
  ~macro_session() {
    zeb::pop_all();
    zeb::stop_macros();
    zeb::macros.protection = before_;
  }
  macro_session(const macro_session&) = delete;
  macro_session& operator=(const macro_session&) = delete;

  /// What is read from now on; after it come "\n;" over and over.
  void read(std::string_view text) {
    zeb::pop_all();
    zeb::push_string(text, "test");
  }

 private:
  int before_;
};

/// What an error in `task` says; empty where there is none.
template <class function>
std::string error_of(function&& task) {
  bool failed = false;
  const std::string printed = printed_by([&] {
    const zeb::jump_context context;
    try {
      task();
    } catch (const zeb::command_unwinding&) {
      failed = true;
    }
  });
  return failed ? printed : std::string();
}

}  // namespace zeb_test
