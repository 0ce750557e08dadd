#include "parallel/tasks/task_state.h"

#include <algorithm>
#include <cstdio>

#include "base/time_limit.h"
#include "language/interpreter.h"
#include "parallel/settings.h"

namespace zeb {

task_state task;

void forget_former_instructions() {
  forget_failure();
  task.no_loops = task.no_waits = task.returning = task.wanted_back = false;
  task.tag = 0;
  task.wanted_tag = -1;
  renew_time_limit();
}

void set_task_tag(int tag) { task.tag = tag; }
void show_command_as(const std::string& text) { task.shown_command = text; }

void note_waiting(bool on) { task.waiting = on; }

void note_failed_task(const std::string& why) {
  std::string line = why;
  std::ranges::replace(line, '\n', ' ');
  // Seen by a master with "catchout" only; MPI would show it at once, among the master's own text.
  if (parallel.mode == back_end::pvm) std::fprintf(stderr, "zeb: %s\n", line.c_str());
  if (!task.failed) task.error = line;
  task.failed = true;
  stop_main_loop();
}

void forget_failure() {
  if (task.without_data) return;
  task.failed = false;
  task.error.clear();
}

}  // namespace zeb
