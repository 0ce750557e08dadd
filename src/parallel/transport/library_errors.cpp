#include "parallel/transport/library_errors.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <utility>

namespace zeb {
namespace {

constexpr const char* complaints[] = {
    "PMIX ERROR: BAD-PARAM", "has unexpectedly disconnected", "Open MPI failed to TCP connect",
    "Operation:  LOOKUP",    "sent help message help-",       "\"orte_base_help_aggregate\"",
};

bool is_complaint(std::string_view text) {
  return std::ranges::any_of(complaints,
                             [text](const char* words) { return text.find(words) != text.npos; });
}

bool is_of_dashes(std::string_view line) { return line.starts_with("--------------------"); }

}  // namespace

std::string library_error_filter::passed(std::string_view line) {
  if (!block_.empty()) {
    block_ += line;
    if (!is_of_dashes(line)) return {};
    const std::string whole = std::exchange(block_, {});
    return is_complaint(whole) ? std::string() : whole;
  }
  if (is_of_dashes(line)) {
    block_ = line;
    return {};
  }
  return is_complaint(line) ? std::string() : std::string(line);
}

void filter_library_errors() {
  std::array<int, 2> ends{};  // to read from, to write to
  const int outside = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
  if (outside < 0 || pipe2(ends.data(), O_CLOEXEC) != 0) return;
  dup2(ends[1], STDERR_FILENO);
  close(ends[1]);
  std::thread([from = fdopen(ends[0], "r"), outside] {
    sigset_t closed_pipe;
    sigemptyset(&closed_pipe);
    sigaddset(&closed_pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &closed_pipe, nullptr);  // nobody may be reading any more
    library_error_filter filter;
    char* line = nullptr;
    std::size_t room = 0;
    while (getline(&line, &room, from) > 0) {
      const std::string text = filter.passed(line);
      if (write(outside, text.data(), text.size()) < 0) continue;
    }
    std::free(line);
  }).detach();
}

}  // namespace zeb
