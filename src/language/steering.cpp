// The files through which a background run is steered: their names hold the process number, their
// content (but for instructions to execute) doesn't matter.
#include "language/steering.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "base/command.h"
#include "base/input_file.h"
#include "base/message_text.h"
#include "base/output_file.h"
#include "base/process.h"
#include "base/safe_mode.h"
#include "base/signals.h"
#include "console/output.h"

namespace zeb {
namespace {

constexpr double seconds_between_looks = 10;
constexpr unsigned pause_poll_seconds = 3;

struct steering_state {
  double last_look = 0;     // wall clock, seconds; 0 before the first
  int execute_counter = 1;  // numbers the copies of execute files; -1 forbids them
};
steering_state steering;

std::string steering_file(const char* what) {
  return text_of("%s_zeb_%i", what, static_cast<int>(getpid()));
}

// Where others may put files, only the user's own steer the run, and no links.
bool is_there(const std::string& name) {
  struct stat status;
  return lstat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         status.st_uid == geteuid() && access(name.c_str(), R_OK) == 0;
}

bool copy_file(const std::string& from, const std::string& to) {
  input_file source;
  output_file copy;
  if (!source.open(from) || !copy.create(to)) return false;
  copy.put(source.rest());
  return source.fault().empty() && copy.close();
}

void wait_while_paused() {
  const std::string file = steering_file("pause");
  const stopped_clock_scope clock;
  while (is_there(file) && noted_signal() == 0) sleep(pause_poll_seconds);
}

void remove_execute_file(const std::string& file) {
  if (std::remove(file.c_str()) == 0) return;
  steering.execute_counter = -1;
  emit("\n------------  N O T E  -----------------\n");
  emit("File \"", file, "\" cannot be removed!\n");
  emit("Will run it and exit (no further resetting\n");
  emit("will be allowed after execution of file).\n");
  emit("------------------------------------------\n");
}

}  // namespace

bool stop_asked_by_file() {
  if (process.slave) return false;
  const double time = wall_clock();
  if (steering.last_look == 0) steering.last_look = time;
  if (time - steering.last_look < seconds_between_looks) return false;
  steering.last_look = time;
  const std::string stop = steering_file("stop");
  if (is_there(stop)) {
    std::remove(stop.c_str());
    return true;
  }
  wait_while_paused();
  return false;
}

execute_file take_execute_file() {
  if (!process.background || process.slave || safe_mode.on || steering.execute_counter < 0) {
    return {};
  }
  const std::string file = steering_file("execute");
  if (!is_there(file)) return {};
  const std::string copy =
      text_of(".zebexec_%i_zeb_%i", steering.execute_counter, static_cast<int>(getpid()));
  if (!copy_file(file, copy)) return {};
  ++steering.execute_counter;
  remove_execute_file(file);
  return {file, copy};
}

}  // namespace zeb
