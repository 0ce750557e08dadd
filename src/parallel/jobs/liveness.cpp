#include "parallel/jobs/liveness.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "parallel/messages/tags.h"
#include "parallel/settings.h"
#include "parallel/tasks/parent_signals.h"
#include "parallel/tasks/parent_watch.h"
#include "parallel/tasks/siblings.h"
#include "parallel/transport/connection.h"
#include "parallel/transport/processes.h"

namespace zeb {
namespace {

bool is_on_this_machine(const task_record& which) {
  return which.host_name == name_of_this_machine();
}

/// Of a process that isn't known, or on another machine, nothing can be said.
bool its_process_runs(const task_record& which) {
  return which.process <= 0 || !is_on_this_machine(which) || process_runs(which.process);
}

void take_hellos(task_record& which) {
  while (const auto message = connection().receive(which.id, tag_hello)) {
    packet_reader from(message->body);
    which.host_name = from.text();
    which.process = from.whole();
    if (parallel.mode == back_end::mpi) which.host = host_named(which.host_name);
  }
}

void tell_disk_problem(const task_record& which, packet_reader reply) {
  const bool right = reply.whole() != 0;
  const std::string reason = reply.text();
  if (right) return;
  emit(text_of("Problems creating disk file...%s, %s\n", which.host_name.c_str(), reason.c_str()));
}

/// Over MPI nothing tells that a task on another machine is dead: it is asked now and then, and
/// doesn't answer. Another question than those whose answers somebody waits for.
bool is_silent(task_record& which) {
  if (parallel.mode != back_end::mpi || (which.process > 0 && is_on_this_machine(which)))
    return false;
  const double now = wall_clock();
  while (connection().receive(which.id, int{tag_reply} + query_speed)) which.answer_due = false;
  if (which.answer_due) return now - which.asked > longest_silence();
  constexpr double seconds_between = 10;
  if (now - which.asked < seconds_between) return false;
  which.asked = now;
  which.answer_due = true;
  packet_writer question;
  question.put(signal_query);
  question.put(query_speed);
  send_signal(which, question);
  return false;
}

}  // namespace

double longest_silence() {
  constexpr double usual = 300;  // seconds; commands that look at no signals may take long
  const char* const told = std::getenv("ZEB_SILENCE_SECONDS");  // NOLINT(concurrency-mt-unsafe)
  return told ? std::max(std::atof(told), 1.0) : usual;
}

void take_status_messages(job_record& job) {
  transport& link = connection();
  for (task_record& t : job.tasks) {
    try {
      take_hellos(t);
      while (const auto reply = link.receive(t.id, tag_disk_reply))
        tell_disk_problem(t, packet_reader(reply->body));
      while (const auto message = link.receive(t.id, tag_status))
        t.status = task_status::unpacked(packet_reader(message->body));
    } catch (const damaged_message&) {
      t.gone = true;
    }
  }
}

bool is_alive(task_record& which) {
  if (which.gone) return false;
  try {
    if (which.process == 0) take_hellos(which);
    which.gone = !connection().is_alive(which.id) || !its_process_runs(which) || is_silent(which);
  } catch (const damaged_message&) {
    which.gone = true;
  }
  return !which.gone;
}

// A task that has joined the others says hello at once.
void await_hellos(std::vector<task_record>& tasks) {
  if (parallel.mode != back_end::mpi) return;
  const double longest = std::min(60.0, longest_silence());  // seconds
  constexpr useconds_t between = 1'000;                      // microseconds
  const double since = wall_clock();
  for (task_record& t : tasks) {
    while (is_alive(t) && t.process == 0) {
      if (wall_clock() - since > longest) t.gone = true;
      check_interrupt();
      usleep(between);
    }
  }
}

void kill_task(task_record& which) {
  connection().kill(which.id);
  // Also one that counts as gone since it has been silent, but no other that has its number now.
  if (which.process > 0 && is_on_this_machine(which) &&
      process_was_called_with(which.process, address_of_this_process()))
    kill(which.process, SIGKILL);
  which.gone = true;
}

bool may_wait_for(task_id id, double seconds) {
  if (id == parent_task) return is_parent_there();
  if (seconds > longest_silence()) return false;
  for (const int slot : jobs_in_order())
    for (task_record& t : job_at(slot).tasks)
      if (t.id == id) return its_process_runs(t);
  return is_sibling_process_there(id);
}

}  // namespace zeb
