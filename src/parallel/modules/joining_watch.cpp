#include "parallel/modules/joining_watch.h"

#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "parallel/transport/processes.h"

namespace zeb {
namespace {

bool is_among(const std::vector<pid_t>& some, pid_t one) {
  return std::ranges::find(some, one) != some.end();
}

}  // namespace

joining_watch::joining_watch(pid_t daemon, std::string_view argument)
    : daemon_(daemon), argument_(argument), former_(children()) {}

// Any of its threads may have started them.
std::vector<pid_t> joining_watch::children() const {
  std::vector<pid_t> found;
  if (daemon_ == 0) return found;
  std::error_code none;
  const std::string threads = "/proc/" + std::to_string(daemon_) + "/task";
  for (const auto& thread : std::filesystem::directory_iterator(threads, none)) {
    std::ifstream numbers(thread.path() / "children");
    for (pid_t child = 0; numbers >> child;) found.push_back(child);
  }
  return found;
}

bool joining_watch::lost_one() {
  for (const pid_t child : children()) {
    if (is_among(former_, child) || is_among(tasks_, child)) continue;
    if (process_was_called_with(child, argument_)) tasks_.push_back(child);
  }
  return !std::ranges::all_of(tasks_, process_runs);
}

void joining_watch::kill_all() {
  lost_one();
  for (const pid_t task : tasks_)
    if (process_was_called_with(task, argument_)) kill(task, SIGKILL);
}

}  // namespace zeb
