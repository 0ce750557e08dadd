// `pzeb` keywords that steer jobs by signals.
#include "parallel/jobs/signalling.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "language/lexer.h"
#include "language/options.h"
#include "parallel/jobs/collecting.h"
#include "parallel/jobs/job_table.h"
#include "parallel/jobs/liveness.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

/// "[wait loops searches all]": the bits of the signal; the default signal without them.
int read_stop_options() {
  if (!accept_char('[')) return signal_stop;
  constexpr std::string_view words[] = {"wait", "loops", "searches", "all"};
  constexpr int bits[] = {signal_stop_wait, signal_stop_loops, signal_time_out, signal_stop_all};
  int code = 0;
  while (!accept_char(']')) {
    if (read_word() == 0) error_end("P-ZEB: stop: specify options wait, loops, searches, or all");
    const int found = find_keyword(token(), words);
    if (found < 0) error_end("P-ZEB: unidentified keyword in stop options:", token());
    code |= bits[found];
  }
  if (code == 0) error_end("P-ZEB: stop: specify options wait, loops, searches, or all");
  return code;
}

struct chosen_tasks {
  std::vector<int> jobs;
  std::vector<int> tasks;  // of the only job; empty: all
};

/// "jobs", or "job = tasks".
chosen_tasks read_jobs_or_tasks() {
  chosen_tasks chosen{read_jobs(), {}};
  if (!accept_char('=')) return chosen;
  if (chosen.jobs.size() != 1) error_end("Tasks can be specified only for a one job at a time!");
  chosen.tasks = read_task_list(chosen.jobs[0]);
  return chosen;
}

void send_to(const chosen_tasks& chosen, const packet_writer& message) {
  for (const int slot : chosen.jobs) {
    job_record& job = job_at(slot);
    if (chosen.tasks.empty()) {
      for (task_record& t : job.tasks) send_signal(t, message);
    } else {
      for (const int number : chosen.tasks) send_signal(job.tasks[at(number)], message);
    }
  }
}

void send_to(const chosen_tasks& chosen, int code) {
  packet_writer message;
  message.put(code);
  send_to(chosen, message);
}

void tell(const char* what, const chosen_tasks& chosen) {
  if (chosen.tasks.empty()) return report_line(what, chosen.jobs.size(), "jobs");
  report_line(what, chosen.tasks.size(), "tasks");
}

void note_pause(const chosen_tasks& chosen, bool paused) {
  if (!chosen.tasks.empty()) return;
  for (const int slot : chosen.jobs) job_at(slot).paused = paused;
}

void send_tag(bool back) {
  double tag = 0;
  if (!read_optional_whole(&tag) || tag < 0 || tag > 1e9) error_end("P-ZEB: must give a tag");
  const chosen_tasks chosen = read_jobs_or_tasks();
  expect_end();
  packet_writer message;
  message.put(signal_tag | (back ? 1 : 0));
  message.put(static_cast<int>(tag));
  send_to(chosen, message);
  tell("Sent signal to", chosen);
}

}  // namespace

void steer_jobs(steering_wish wish) {
  for (const int slot : jobs_in_order()) {
    job_record& job = job_at(slot);
    if (wish == steering_wish::stop) {
      send_signal(job, signal_stop);
    } else {
      job.paused = wish == steering_wish::pause;
      send_signal(job, job.paused ? signal_pause : signal_resume);
    }
  }
}

void stop_keyword() {
  int code = read_stop_options();
  const chosen_tasks chosen = read_jobs_or_tasks();
  if (code == signal_stop) code = read_stop_options();  // the two stand in any order
  expect_end();
  send_to(chosen, code);
  tell("Stopped", chosen);
}

void kill_all_jobs() {
  for (const int slot : jobs_in_order()) {
    for (task_record& t : job_at(slot).tasks) {
      send_signal(t, signal_kill);
      kill_task(t);
    }
    forget_job(slot);
  }
}

void kill_keyword() {
  const chosen_tasks chosen = read_jobs_or_tasks();
  expect_end();
  for (const int slot : chosen.jobs) {
    job_record& job = job_at(slot);
    for (std::size_t i = 0; i < job.tasks.size(); ++i) {
      const int number = static_cast<int>(i);
      if (!chosen.tasks.empty() && !std::ranges::count(chosen.tasks, number)) continue;
      send_signal(job.tasks[i], signal_kill);
      kill_task(job.tasks[i]);
    }
    const bool any_left =
        std::ranges::any_of(job.tasks, [](const task_record& t) { return !t.gone; });
    if (!any_left) forget_job(slot);
  }
  tell("Killed", chosen);
}

void pause_keyword() {
  const chosen_tasks chosen = read_jobs_or_tasks();
  expect_end();
  send_to(chosen, signal_pause);
  note_pause(chosen, true);
  tell("Paused", chosen);
}

void resume_keyword() {
  const chosen_tasks chosen = read_jobs_or_tasks();
  expect_end();
  send_to(chosen, signal_resume);
  note_pause(chosen, false);
  tell("Resumed", chosen);
}

void skipto_keyword() { send_tag(false); }
void goto_keyword() { send_tag(true); }

}  // namespace zeb
