#include "parallel/modules/daemon_watch.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>

#include "parallel/transport/processes.h"

namespace zeb {
namespace {

struct watch_state {
  int pipe = -1;  // its end closes when this process ends, however that is
};
watch_state to_watch;

[[noreturn]] void watch(int from_process) {
  constexpr int looks = 80;
  constexpr useconds_t between_looks = 50'000;  // microseconds
  setsid();
  dup2(from_process, STDIN_FILENO);
  const int nothing = open("/dev/null", O_RDWR);
  dup2(nothing, STDOUT_FILENO);
  dup2(nothing, STDERR_FILENO);
  for (int file = getdtablesize() - 1; file > STDERR_FILENO; --file) close(file);
  pid_t daemon = 0;
  if (read(STDIN_FILENO, &daemon, sizeof daemon) != sizeof daemon) _exit(0);
  char end = 0;
  while (read(STDIN_FILENO, &end, 1) > 0) {
  }
  for (int look = 0; look < looks && process_runs(daemon); ++look) usleep(between_looks);
  kill(daemon, SIGKILL);
  _exit(0);
}

std::string name_of(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  file >> name;
  return name;
}

}  // namespace

void begin_daemon_watch() {
  std::array<int, 2> ends{};
  if (to_watch.pipe >= 0 || pipe2(ends.data(), O_CLOEXEC) != 0) return;
  const pid_t child = fork();
  if (child == 0) watch(ends[0]);
  close(ends[0]);
  to_watch.pipe = ends[1];
}

pid_t daemon_of_this_process() {
  const std::string own = std::to_string(getpid());
  std::ifstream children("/proc/" + own + "/task/" + own + "/children");
  for (pid_t child = 0; children >> child;)
    if (name_of(child) == "orted") return child;
  return 0;
}

void tell_daemon_watch() {
  const pid_t daemon = daemon_of_this_process();
  if (daemon != 0 && write(to_watch.pipe, &daemon, sizeof daemon) != sizeof daemon)
    close(to_watch.pipe);
}

}  // namespace zeb
