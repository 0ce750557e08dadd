#include "parallel/jobs/job_table.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "language/lexer.h"
#include "language/list_kinds.h"
#include "language/lists.h"
#include "parallel/settings.h"
#include "parallel/tasks/parent_signals.h"
#include "parallel/tasks/siblings.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

struct job_table {
  std::array<job_record, most_jobs> jobs;
  int last_sequence = 0;
};
job_table table;

void take_hello(task_record& which, const arrived_message& message) {
  packet_reader from(message.body);
  which.host_name = from.text();
  which.process = from.whole();
}

bool is_on_this_machine(const task_record& which) {
  return which.host_name == name_of_this_machine();
}

bool process_runs(const task_record& which) {
  return which.process <= 0 || !is_on_this_machine(which) || kill(which.process, 0) == 0 ||
         errno == EPERM;
}

}  // namespace

job_record& job_at(int slot) { return table.jobs[at(slot)]; }

int active_jobs() {
  return static_cast<int>(std::count_if(table.jobs.begin(), table.jobs.end(),
                                        [](const job_record& job) { return job.active; }));
}

int free_job_slot() {
  for (int slot = 0; slot < most_jobs; ++slot)
    if (!job_at(slot).active) {
      job_at(slot) = {};
      job_at(slot).sequence = ++table.last_sequence;
      return slot;
    }
  error_end_f("P-ZEB: cannot run more than %i jobs at the same time!", most_jobs);
}

int find_job(std::string_view name) {
  for (int slot = 0; slot < most_jobs; ++slot)
    if (job_at(slot).active && job_at(slot).name == name) return slot;
  return -1;
}

void forget_job(int slot) {
  job_record& job = job_at(slot);
  std::vector<task_id> ids;
  for (const task_record& t : job.tasks) ids.push_back(t.id);
  if (in_parallel_mode()) connection().forget(ids);
  job.active = false;
  for (task_record& t : job.tasks) t.gone = true;
}

std::vector<int> jobs_in_order() {
  std::vector<int> slots;
  for (int slot = 0; slot < most_jobs; ++slot)
    if (job_at(slot).active) slots.push_back(slot);
  std::sort(slots.begin(), slots.end(),
            [](int a, int b) { return job_at(a).sequence < job_at(b).sequence; });
  return slots;
}

namespace {

/// Of a range only those that are active; one of them must be.
void add_active_jobs(const std::vector<std::uint8_t>& item, std::vector<std::uint8_t>& all) {
  bool any = false;
  for (int slot = 0; slot < most_jobs; ++slot) {
    if (!item[at(slot)] || !job_at(slot).active) continue;
    all[at(slot)] = 1;
    any = true;
  }
  const auto first = std::ranges::find(item, std::uint8_t{1});
  if (!any && first != item.end()) error_end("No job", first - item.begin());
}

}  // namespace

std::vector<int> read_jobs() {
  if (active_jobs() == 0) error_end("P-ZEB: no parallel job is running");
  const int next = skip_blanks_peek();
  if (next == ';' || next == '(' || next == '[' || next == '/') return jobs_in_order();
  std::vector<std::uint8_t> all(most_jobs, 0);
  std::vector<std::uint8_t> item(most_jobs, 0);
  list_reader items(list_ends_at_signs | list_slash_ends, 0, most_jobs, find_list_kind("job"),
                    item);
  for (int c = skip_blanks_peek(); std::isalnum(c) || c == '_' || c == '.' || c == ':' || c == '{';
       c = skip_blanks_peek()) {
    std::ranges::fill(item, std::uint8_t{0});
    items.read_item_at(c);
    add_active_jobs(item, all);
  }
  std::vector<int> chosen;
  for (const int slot : jobs_in_order())
    if (all[at(slot)]) chosen.push_back(slot);
  return chosen;
}

int read_job(bool also_past) {
  double number = -1;
  if (read_name() > 0) {
    int slot = find_job(token());
    for (int past = 0; also_past && slot < 0 && past < most_jobs; ++past)
      if (job_at(past).name == token()) slot = past;
    if (slot < 0) error_end("No job named", token());
    return slot;
  }
  if (!read_optional_whole(&number)) error_end("Must give a job");
  if (!(number >= 0 && number < most_jobs) ||
      (!also_past && !job_at(static_cast<int>(number)).active))
    error_end_f("No job %g", number);
  return static_cast<int>(number);
}

void register_job_lists() {
  register_list_kind({.noun = "task", .count = [] { return most_tasks; }});
  register_list_kind({.noun = "sector", .count = [] { return most_tasks; }});
  register_list_kind({.noun = "job",
                      .count = [] { return most_jobs; },
                      .name =
                          [](int slot) {
                            const job_record& job = job_at(slot);
                            return job.active ? std::string_view(job.name) : std::string_view();
                          }});
}

void send_signal(task_record& to, const packet_writer& message) {
  if (to.gone) return;
  if (!connection().send(to.id, tag_signal, message.bytes())) to.gone = true;
}

void send_signal(task_record& to, int code) {
  packet_writer message;
  message.put(code);
  send_signal(to, message);
}

void send_signal(job_record& to, int code) {
  for (task_record& t : to.tasks) send_signal(t, code);
}

namespace {

void tell_disk_problem(const task_record& which, packet_reader reply) {
  const bool right = reply.whole() != 0;
  const std::string reason = reply.text();
  if (right) return;
  emit(text_of("Problems creating disk file...%s, %s\n", which.host_name.c_str(), reason.c_str()));
}

}  // namespace

void take_status_messages(job_record& job) {
  transport& link = connection();
  for (task_record& t : job.tasks) {
    try {
      while (const auto hello = link.receive(t.id, tag_hello)) take_hello(t, *hello);
      while (const auto reply = link.receive(t.id, tag_disk_reply))
        tell_disk_problem(t, packet_reader(reply->body));
      while (const auto message = link.receive(t.id, tag_status))
        t.status = task_status::unpacked(packet_reader(message->body));
    } catch (const damaged_message&) {
      t.gone = true;
    }
  }
}

namespace {

void ask(task_record& which, int query) {
  packet_writer message;
  message.put(signal_query);
  message.put(query);
  while (connection().receive(which.id, tag_reply + query)) {
    // An answer that came too late for an earlier question.
  }
  send_signal(which, message);
}

double longest_silence() {
  constexpr double usual = 300;  // seconds; commands that look at no signals may take long
  const char* const told = std::getenv("ZEB_SILENCE_SECONDS");  // NOLINT(concurrency-mt-unsafe)
  return told ? std::max(std::atof(told), 1.0) : usual;
}

/// Over MPI nothing tells that a task on another machine is dead: it is asked now and then, and
/// doesn't answer. Another question than those whose answers somebody waits for.
bool is_silent(task_record& which) {
  if (parallel.mode != back_end::mpi || (which.process > 0 && is_on_this_machine(which)))
    return false;
  const double now = wall_clock();
  constexpr int reply = int{tag_reply} + query_speed;
  while (connection().receive(which.id, reply)) which.answer_due = false;
  if (which.answer_due) return now - which.asked > longest_silence();
  constexpr double seconds_between = 10;
  if (now - which.asked < seconds_between) return false;
  which.asked = now;
  which.answer_due = true;
  ask(which, query_speed);
  return false;
}

}  // namespace

bool is_alive(task_record& which) {
  if (which.gone) return false;
  transport& link = connection();
  if (which.process == 0) {
    if (const auto hello = link.receive(which.id, tag_hello)) {
      try {
        take_hello(which, *hello);
      } catch (const damaged_message&) {
        which.gone = true;
      }
    }
  }
  which.gone = which.gone || !link.is_alive(which.id) || !process_runs(which) || is_silent(which);
  return !which.gone;
}

namespace {

/// Waits for it as long as the task is there.
std::optional<arrived_message> answer_of(task_record& from, int tag) {
  constexpr useconds_t between = 2'000;  // microseconds
  constexpr int rounds_between_tests = 100;
  for (int round = 0; !from.gone; ++round) {
    if (auto answer = connection().receive(from.id, tag)) return answer;
    if (round % rounds_between_tests == rounds_between_tests - 1) is_alive(from);
    check_interrupt();
    if (interrupted()) break;
    usleep(between);
  }
  return std::nullopt;
}

}  // namespace

std::optional<arrived_message> query_task(task_record& which, int query) {
  packet_writer message;
  message.put(signal_query);
  message.put(query);
  const int reply = query == query_text ? int{tag_text} : tag_reply + query;
  while (connection().receive(which.id, reply)) {
    // An answer that came too late for an earlier question.
  }
  send_signal(which, message);
  return answer_of(which, reply);
}

namespace {

/// The fields of a status come by a query each.
constexpr int queries_of_status[] = {query_trees,    query_rearrangements, query_score,
                                     query_finished, query_replications,   query_tag,
                                     query_stage,    query_errors};

void take_answer(int query, packet_reader from, task_status& now) {
  switch (query) {
    case query_trees:
      now.trees = from.whole();
      return;
    case query_rearrangements:
      now.rearrangements_high = from.long_whole();
      now.rearrangements_low = from.long_whole();
      return;
    case query_score:
      now.score = from.real();
      return;
    case query_finished:
      now.finished = from.whole() != 0;
      return;
    case query_replications:
      now.replications = from.whole();
      return;
    case query_tag:
      now.tag = from.whole();
      return;
    case query_stage:
      now.stage = from.whole();
      return;
    default:
      if (from.whole() != 0) now.command = "ERROR";
  }
}

}  // namespace

std::vector<task_status> statuses_of_tasks(std::span<task_record* const> tasks) {
  std::vector<task_status> all(tasks.size());
  for (task_record* const t : tasks)
    if (!t->status && is_alive(*t))
      for (const int query : queries_of_status) ask(*t, query);
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    task_record& t = *tasks[i];
    if (t.status) all[i] = *t.status;
    if (t.gone) all[i].finished = true;
    if (t.status || t.gone) continue;
    for (const int query : queries_of_status) {
      const auto answer = answer_of(t, tag_reply + query);
      if (!answer) break;
      try {
        take_answer(query, packet_reader(answer->body), all[i]);
      } catch (const damaged_message&) {
        t.gone = true;
      }
    }
  }
  return all;
}

void kill_task(task_record& which) {
  if (which.gone) return;
  connection().kill(which.id);
  if (which.process > 0 && is_on_this_machine(which)) kill(which.process, SIGKILL);
  which.gone = true;
}

bool is_process_there(task_id id) {
  if (id == parent_task) return is_parent_there();
  for (const int slot : jobs_in_order())
    for (const task_record& t : job_at(slot).tasks)
      if (t.id == id) return process_runs(t);
  return is_sibling_process_there(id);
}

bool is_finished(task_record& which) {
  if (!is_alive(which)) return true;
  const auto answer = query_task(which, query_finished);
  try {
    return !answer || packet_reader(answer->body).whole() != 0;
  } catch (const damaged_message&) {
    return true;
  }
}

}  // namespace zeb
