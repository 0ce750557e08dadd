#include "language/batch.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace zeb {
namespace {

constexpr int signal_status = 128;  // what a shell adds to the number of a signal
constexpr int failed_status = 255;

bool ended_by_signal(int status) { return status > signal_status && status < failed_status; }

int status_of(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return failed_status;
  }
  return WIFSIGNALED(status) ? signal_status + WTERMSIG(status) : WEXITSTATUS(status);
}

int run_apart(const std::string& file, int (*run)(const std::string& file)) {
  const pid_t child = fork();
  if (child == 0) std::exit(run(file));  // NOLINT(concurrency-mt-unsafe)
  if (child > 0) return status_of(child);
  std::perror("zeb: can't start another run");
  return failed_status;
}

}  // namespace

int run_batch(std::span<const std::string> files, int (*run)(const std::string& file)) {
  if (files.size() == 1) return run(files[0]);
  int failed = 0;
  for (const std::string& file : files) {
    const int status = run_apart(file, run);
    if (failed == 0) failed = status;
    if (ended_by_signal(status)) break;
  }
  return failed;
}

}  // namespace zeb
