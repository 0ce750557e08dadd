// The files through which a background run is steered: their names hold the process number, their
// content (but for instructions to execute) doesn't matter.
#include "language/steering.h"

#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <utility>

#include "base/command.h"
#include "base/file_calls.h"
#include "base/message_text.h"
#include "base/output_file.h"
#include "base/process.h"
#include "base/safe_mode.h"
#include "base/signals.h"
#include "console/output.h"
#include "language/hooks.h"

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

// Only what the user of this run left counts: the names can be guessed.
bool is_there(const std::string& name) {
  input_file file;
  return file.open_own(name);
}

std::string copy_name(int number) {
  return text_of(".zebexec_%i_zeb_%i", number, static_cast<int>(getpid()));
}

bool stands(const std::string& name) {
  struct stat status;
  return lstat(name.c_str(), &status) == 0;
}

// What others put under the names of copies doesn't keep a run from its instructions.
std::string free_copy_name() {
  while (stands(copy_name(steering.execute_counter))) ++steering.execute_counter;
  return copy_name(steering.execute_counter);
}

bool copy_file(input_file& from, const std::string& to) {
  output_file copy;
  if (!copy.create(to, true)) return false;
  copy.put(from.rest());
  return from.fault().empty() && copy.close();
}

void tell_jobs(steering_wish wish) {
  if (hooks_of_language.run_steered) hooks_of_language.run_steered(wish);
}

void wait_while_paused() {
  const std::string file = steering_file("pause");
  if (!is_there(file)) return;
  const stopped_clock_scope clock;
  tell_jobs(steering_wish::pause);
  while (is_there(file) && noted_signal() == 0) sleep(pause_poll_seconds);
  tell_jobs(steering_wish::go_on);
}

void remove_execute_file(const std::string& file) {
  if (call_remove(file) == 0) return;
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
    call_remove(stop);
    tell_jobs(steering_wish::stop);
    return true;
  }
  wait_while_paused();
  return false;
}

execute_file take_execute_file() {
  if (!process.background || process.slave || safe_mode.on || steering.execute_counter < 0) {
    return {};
  }
  const std::string name = steering_file("execute");
  if (!stands(name)) return {};
  const std::string copy = free_copy_name();
  execute_file file;
  input_file left;
  if (!left.open_own(name) || !copy_file(left, copy) || !file.instructions.open_own(copy)) {
    report_line("Cannot take up instructions from", name + left.cause());
    return {};
  }
  ++steering.execute_counter;
  remove_execute_file(name);
  file.name = name;
  return file;
}

void remove_left_steering_files() {
  // A file that is younger may have been left for this run.
  constexpr double oldest_of_this_run = 60;  // seconds
  const auto remove_if_old = [](const std::string& name) {
    struct stat status;
    if (lstat(name.c_str(), &status) != 0 || status.st_uid != geteuid()) return;
    if (wall_clock() - static_cast<double>(status.st_mtime) >= oldest_of_this_run)
      call_remove(name);
  };
  for (const char* what : {"stop", "pause", "execute"}) remove_if_old(steering_file(what));
  for (int number = 1; stands(copy_name(number)); ++number) remove_if_old(copy_name(number));
}

}  // namespace zeb
