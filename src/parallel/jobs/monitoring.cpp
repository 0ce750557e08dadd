// `pzeb wait`: looks at tasks until they are done, or until a condition is fulfilled.
#include "parallel/jobs/monitoring.h"

#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/interrupt_keys.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "parallel/jobs/collecting.h"
#include "parallel/jobs/job_table.h"
#include "parallel/jobs/liveness.h"
#include "parallel/settings.h"
#include "parallel/tasks/task_state.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

constexpr std::size_t longest_condition = 8000;

struct wait_state {
  bool succeeded = true;
  std::vector<int> monitored;  // jobs whose status is kept up
  int number = 0;  // tasks tell it, since what they sent for an earlier one may come late
};
wait_state last_wait;

struct wait_request {
  double timeout = 0;  // seconds; 0 none
  std::string condition;
  std::vector<int> jobs;
};

double read_timeout() {
  double seconds = 0;
  if (!read_optional_float(&seconds) || !(seconds > 0))
    error_end("P-ZEB: timeout for \"wait\" must be > 0");
  if (!accept_char(']')) error_end("Expected ']' after time-out for \"wait\"");
  return seconds;
}

/// From after its "(" to its ")", unexpanded.
std::string read_condition() {
  const reading_flag plain(&macro_reading::no_expansion);
  std::string text;
  for (int depth = 1; depth > 0;) {
    if (input_ended()) error_end("Found end-of-file:", "expecting \")\"");
    const int c = read_char();
    if (c == '(') ++depth;
    if (c == ')' && --depth == 0) break;
    text += static_cast<char>(c);
    if (text.size() > longest_condition) error_end("P-ZEB: condition for \"wait\" is too long");
  }
  return text;
}

wait_request read_wait_request() {
  wait_request request;
  bool jobs_given = false;
  for (int next = skip_blanks_peek(); next != ';'; next = skip_blanks_peek()) {
    if (accept_char('[')) {
      request.timeout = read_timeout();
    } else if (accept_char('(')) {
      request.condition = read_condition();
    } else {
      if (jobs_given) expect_end();
      request.jobs = read_jobs();
      jobs_given = true;
    }
  }
  read_char();
  if (!jobs_given) {
    if (active_jobs() == 0) error_end("P-ZEB: no parallel job is running");
    request.jobs = jobs_in_order();
  }
  if (request.jobs.empty()) error_end("P-ZEB: no jobs to monitor!");
  return request;
}

/// In the text that is being read, whose variables, loops and arguments it may name.
bool is_fulfilled(const std::string& condition) {
  const quiet_scope quiet;
  const std::string pending = take_expansion();
  const std::string text = "(" + condition + ");";
  insert_text(text, text.size());
  const double value = macro_value();
  close_expansion();
  if (!pending.empty()) insert_text(pending);
  return value != 0;
}

void begin_monitoring(const std::vector<int>& slots) {
  packet_writer message;
  message.put(signal_monitor);
  message.put(++last_wait.number);
  for (const int slot : slots) {
    job_record& job = job_at(slot);
    for (task_record& t : job.tasks) {
      t.status = task_status();
      send_signal(t, message);
    }
  }
  last_wait.monitored = slots;
}

void end_monitoring() {
  for (const int slot : last_wait.monitored)
    if (job_at(slot).active) send_signal(job_at(slot), signal_no_monitor);
  last_wait.monitored.clear();
  if (parallel.mnemonic) return;
  for (int slot = 0; slot < most_jobs; ++slot)
    for (task_record& t : job_at(slot).tasks) t.status.reset();
}

std::string score_text(double score) { return score < 0 ? "------" : text_of("%.6g", score); }

std::string rearrangements_text(const task_status& s) {
  std::string digits = std::to_string(s.rearrangements_low);
  if (s.rearrangements_high > 0)
    digits = std::to_string(s.rearrangements_high) +
             std::string(9 - std::min<std::size_t>(digits.size(), 9), '0') + digits;
  return with_commas(digits);
}

std::string status_word(const task_record& t) {
  if (t.gone) return "dead";
  if (t.status->command == "ERROR") return "ERROR";
  if (t.status->finished) return "done";
  return t.status->paused ? "pause" : "run";
}

/// Counts and the best score; a job's line without a task.
void add_to_totals(const task_status& s, task_status& totals) {
  constexpr std::uint64_t unit = 1'000'000'000;
  totals.replications += s.replications;
  totals.rearrangements_low += s.rearrangements_low;
  totals.rearrangements_high += s.rearrangements_high + totals.rearrangements_low / unit;
  totals.rearrangements_low %= unit;
  totals.trees += s.trees;
  if (s.score >= 0 && (totals.score < 0 || s.score < totals.score)) totals.score = s.score;
}

std::string line_of(const std::string& job, const std::string& task_text, const task_status& s,
                    const std::string& state) {
  return text_of("%-7.7s %-9.9s %-7.7s %5i %6i %18s %13s  %s", job.c_str(), task_text.c_str(),
                 s.command.c_str(), s.trees, s.replications, rearrangements_text(s).c_str(),
                 score_text(s.score).c_str(), state.c_str());
}

bool all_done(const std::vector<int>& slots, bool test_life) {
  bool done = true;
  for (const int slot : slots) {
    job_record& job = job_at(slot);
    take_status_messages(job);
    for (task_record& t : job.tasks) {
      if (test_life) is_alive(t);
      if (t.status && t.status->wait != last_wait.number) t.status = task_status();
      done = done && (t.gone || (t.status && t.status->finished));
    }
  }
  return done;
}

std::string host_of(const task_record& t) {
  if (!t.host_name.empty()) return t.host_name;
  const std::vector<host_record>& hosts = hosts_in_use();
  return at(t.host) < hosts.size() ? hosts[at(t.host)].name : "";
}

std::vector<std::string> status_table(const std::vector<int>& slots) {
  std::vector<std::string> rows = {
      "Job     Task/Host Command Trees Repls.         Rearrangs.         Score  Stat"};
  for (const int slot : slots) {
    job_record& job = job_at(slot);
    task_status totals;
    totals.command = "";
    for (std::size_t i = 0; i < job.tasks.size(); ++i) {
      task_record& t = job.tasks[i];
      if (!t.status) t.status = task_status();
      add_to_totals(*t.status, totals);
      rows.push_back(
          line_of(job.name, std::to_string(i) + "/" + host_of(t), *t.status, status_word(t)));
    }
    rows.push_back(line_of(job.name, "(all)", totals, job.paused ? "pause" : ""));
  }
  return rows;
}

/// For users who wait: the table, or a line where it doesn't fit the screen.
void show_state(const std::vector<int>& slots) {
  if (show_progress_table(status_table(slots))) return;
  task_status totals;
  int finished = 0;
  int tasks = 0;
  for (const int slot : slots) {
    for (const task_record& t : job_at(slot).tasks) {
      ++tasks;
      if (!t.status) continue;
      add_to_totals(*t.status, totals);
      finished += t.status->finished || t.gone;
    }
  }
  show_progress(text_of("%i of %i tasks done, best score %s, %s rearrangements", finished, tasks,
                        score_text(totals.score).c_str(), rearrangements_text(totals).c_str()),
                0, 0);
}

enum class wait_end { finished, fulfilled, timed_out, interrupted };

/// <esc> and "." end the waiting.
void look_at_keys() {
  if (process.background || process.batch || !settings.break_polling) return;
  if (poll_waiting_keys() != key_wish::nothing) stop_search(stop_reason::user);
}

wait_end watch(const wait_request& request) {
  constexpr useconds_t between = 50'000;  // microseconds
  constexpr double seconds_between_tests = 1;
  const double since = command_seconds();  // without pauses
  const search_running patient;            // a key ends the waiting, not the command
  double last_look = wall_clock();
  double last_test = last_look;
  double last_shown = 0;
  for (;;) {
    const double now = wall_clock();
    const bool test = now - last_test > seconds_between_tests;
    if (test) last_test = now;
    if (all_done(request.jobs, test)) return wait_end::finished;
    if (!request.condition.empty() && now - last_look >= 0.5 * parallel.communication_time) {
      last_look = now;
      if (is_fulfilled(request.condition)) return wait_end::fulfilled;
    }
    if (request.timeout > 0 && command_seconds() - since >= request.timeout)
      return wait_end::timed_out;
    if (now - last_shown >= parallel.communication_time) {
      last_shown = now;
      show_state(request.jobs);
    }
    look_at_keys();
    check_interrupt();
    if (interrupted()) return wait_end::interrupted;
    if (process.slave && task.no_waits) return wait_end::interrupted;
    usleep(between);
  }
}

std::vector<int> wait_for_jobs() {
  const wait_request request = read_wait_request();
  last_wait.succeeded = true;
  begin_monitoring(request.jobs);
  note_waiting(true);
  const wait_end end = watch(request);
  note_waiting(false);
  clear_progress();
  if (settings.report) show_status_table(request.jobs);
  end_monitoring();
  forget_interrupt();
  switch (end) {
    case wait_end::finished:
      report_line("P-ZEB: wait: all jobs monitored finished running");
      break;
    case wait_end::fulfilled:
      report_line("P-ZEB: wait: condition is fulfilled");
      break;
    case wait_end::timed_out:
      last_wait.succeeded = false;
      report_line("P-ZEB: wait: time is out");
      break;
    case wait_end::interrupted:
      last_wait.succeeded = false;
      report_line(process.slave ? "P-ZEB: wait: stopped by parent" : "P-ZEB: wait: user interrupt");
  }
  return request.jobs;
}

}  // namespace

bool last_wait_succeeded() { return last_wait.succeeded; }

void stop_monitoring_after_error() {
  note_waiting(false);
  if (!last_wait.monitored.empty()) end_monitoring();
}

void show_status_table(const std::vector<int>& slots) {
  for (const std::string& row : status_table(slots)) emit(row, "\n");
}

void wait_keyword() { wait_for_jobs(); }

void gwait_keyword() {
  const std::vector<int> jobs = wait_for_jobs();
  for (const int slot : jobs) send_signal(job_at(slot), signal_stop);
  collect_jobs(jobs, false, collecting::one_by_one);
}

}  // namespace zeb
