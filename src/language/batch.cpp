#include "language/batch.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "base/signals.h"

namespace zeb {
namespace {

constexpr int signal_status = 128;  // what a shell adds to the number of a signal
constexpr int failed_status = 255;

bool ended_by_signal(int status) { return status > signal_status && status < failed_status; }

// A signal for this process is meant for the run that it waits for, which gets it again as long as
// it goes on: it may have begun too shortly before.
int status_of(pid_t child) {
  constexpr int milliseconds = 10;
  constexpr int looks_between_signals = 50;
  int status = 0;
  int looks = 0;
  for (pid_t ended = 0; ended != child; ended = waitpid(child, &status, WNOHANG)) {
    if (ended < 0 && errno != EINTR) return failed_status;
    if (noted_signal() != 0 && looks++ % looks_between_signals == 0) kill(child, noted_signal());
    poll(nullptr, 0, milliseconds);
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
  note_signals();
  for (const std::string& file : files) {
    if (noted_signal() != 0) return signal_status + noted_signal();
    const int status = run_apart(file, run);
    if (failed == 0) failed = status;
    if (ended_by_signal(status)) break;
  }
  return failed;
}

}  // namespace zeb
