// The files through which a background run is steered: their names hold the process number, their
// content (but for instructions to execute) doesn't matter.
#include "language/steering.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "base/command.h"
#include "base/message_text.h"
#include "base/process.h"
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

bool can_be_opened(const std::string& name) { return access(name.c_str(), R_OK) == 0; }

bool copy_file(const std::string& from, const std::string& to) {
  std::ifstream source(from, std::ios::binary);
  std::ofstream copy(to, std::ios::binary);
  if (!source || !copy) return false;
  if (source.peek() != std::ifstream::traits_type::eof()) copy << source.rdbuf();
  return copy.good();
}

void wait_while_paused() {
  const std::string file = steering_file("pause");
  const stopped_clock_scope clock;
  while (can_be_opened(file)) sleep(pause_poll_seconds);
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
  if (can_be_opened(stop)) {
    std::remove(stop.c_str());
    return true;
  }
  wait_while_paused();
  return false;
}

execute_file take_execute_file() {
  if (!process.background || process.slave || steering.execute_counter < 0) return {};
  const std::string file = steering_file("execute");
  if (!can_be_opened(file)) return {};
  const std::string copy =
      text_of(".zebexec_%i_zeb_%i", steering.execute_counter, static_cast<int>(getpid()));
  if (!copy_file(file, copy)) return {};
  ++steering.execute_counter;
  remove_execute_file(file);
  return {file, copy};
}

}  // namespace zeb
