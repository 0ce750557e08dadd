// What is printed while one lives: a log in a temporary file.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/input_file.h"
#include "console/log.h"

namespace zeb_test {

class captured_log {
 public:
  captured_log() {
    const int descriptor = mkstemp(name_.data());
    if (descriptor < 0 || close(descriptor) != 0 || !zeb::open_log(name_, true)) std::abort();
  }
  ~captured_log() {
    zeb::close_log();
    std::remove(name_.c_str());
  }
  captured_log(const captured_log&) = delete;
  captured_log& operator=(const captured_log&) = delete;
  /// All of it; nothing more is captured.
  std::string text() {
    zeb::close_log();
    zeb::input_file file;
    if (!file.open(name_)) std::abort();
    return file.rest();
  }

 private:
  std::string name_ = "/tmp/zeb_printed_XXXXXX";
};

}  // namespace zeb_test
