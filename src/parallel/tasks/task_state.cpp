#include "parallel/tasks/task_state.h"

#include "console/text_buffer.h"
#include "language/interpreter.h"

namespace zeb {

task_state task;

void set_task_tag(int tag) { task.tag = tag; }
void show_command_as(const std::string& text) { task.shown_command = text; }

void note_waiting(bool on) { task.waiting = on; }

void note_failed_task(const std::string& why) {
  if (!task.failed) task.error = why;
  task.failed = true;
  stop_main_loop();
}

void note_failed_task() {
  std::string last;
  for (std::size_t i = display_buffer.lines(); i-- > 0 && last.empty();)
    last = display_buffer.line(i);
  note_failed_task(last);
}

}  // namespace zeb
