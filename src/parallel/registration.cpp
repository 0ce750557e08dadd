#include "parallel/registration.h"

#include <string>
#include <utility>

#include "base/command.h"
#include "base/process.h"
#include "language/hooks.h"
#include "language/settings_scope.h"
#include "macro/hooks.h"
#include "parallel/hosts/host_lists.h"
#include "parallel/jobs/job_table.h"
#include "parallel/jobs/liveness.h"
#include "parallel/jobs/monitoring.h"
#include "parallel/jobs/signalling.h"
#include "parallel/settings.h"
#include "parallel/tasks/instructions.h"
#include "parallel/tasks/parent_signals.h"
#include "parallel/tasks/reports.h"
#include "parallel/tasks/task.h"
#include "parallel/tasks/task_state.h"
#include "parallel/transport/connection.h"
#include "search/hooks.h"

namespace zeb {

void register_parallel() {
  hooks_of_language.run_task = run_task;
  hooks_of_language.stop_asked_by_parent = stop_asked_by_parent;
  hooks_of_language.text_of_name = [](const std::string& name) {
    return process.slave && name == "myself" ? &std::as_const(task.instructions) : nullptr;
  };
  hooks_of_language.task_failed = note_failed_task;
  hooks_of_language.run_steered = steer_jobs;
  hooks_of_macro.no_more_loops = [] { return task.no_loops; };
  hooks_of_macro.return_of_task = read_return;
  hooks_of_search.search_ended = count_search;
  add_settings(
      []() -> settings_restorer { return [former = parallel] { take_settings(former); }; });
  wait_by(may_wait_for);
  register_job_lists();
  register_host_lists();
  add_command_over_hook(stop_monitoring_after_error);
  // PVM waits for tasks that still run before it lets their parent go.
  add_closing_hook([] {
    kill_all_jobs();
    leave_parallel_mode();
  });
}

}  // namespace zeb
