#include "parallel/tasks/task_state.h"

#include "language/interpreter.h"

namespace zeb {

task_state task;

void set_task_tag(int tag) { task.tag = tag; }
void show_command_as(const std::string& text) { task.shown_command = text; }

void note_waiting(bool on) { task.waiting = on; }

void note_failed_task() {
  task.failed = true;
  stop_main_loop();
}

}  // namespace zeb
