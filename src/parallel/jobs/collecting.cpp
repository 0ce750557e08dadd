
#include "parallel/jobs/collecting.h"

#include <unistd.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>

#include "base/command.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/progress.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "parallel/jobs/job_table.h"
#include "parallel/jobs/liveness.h"
#include "parallel/jobs/queries.h"
#include "parallel/jobs/result_groups.h"
#include "parallel/jobs/sector_results.h"
#include "parallel/settings.h"
#include "parallel/tasks/tree_loads.h"
#include "parallel/transport/connection.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// The collecting of one job.
class collection {
 public:
  collection(int slot, bool alone, bool stop_first)
      : slot_(slot), job_(job_at(slot)), alone_(alone) {
    results_.resize(job_.tasks.size());
    if (stop_first) {
      emit(
          text_of("\n\rNote: \"get\" must wait for all tasks to finish before\n\rgetting results "
                  "from %s.  This may take a while...\n\n\r",
                  job_.name.c_str()));
      send_signal(job_, signal_stop);
    }
    report_line("Getting results from", job_.name);
    send_signal(job_, signal_leave);
  }

  /// Takes what has come. True: nothing more will come.
  bool poll();
  int answered() const { return answered_; }
  int tasks() const { return static_cast<int>(job_.tasks.size()); }
  void finish(const char* why_broken_off);

 private:
  void take(task_record& from, const arrived_message& message);
  bool fits_data(std::size_t which) const;
  bool store_results();
  void tell_dead() const;
  void tell_errors() const;

  int slot_;
  job_record& job_;
  bool alone_;
  int answered_ = 0;
  double last_test_ = 0;
  std::vector<std::optional<task_result>> results_;
};

void collection::take(task_record& from, const arrived_message& message) {
  const auto which = static_cast<std::size_t>(&from - job_.tasks.data());
  try {
    results_[which] = task_result::unpacked(packet_reader(message.body));
    from.collected = true;
    from.value.reset();
    if (results_[which]->with_value) from.value = results_[which]->value;
    send_signal(from, signal_collect);
    ++answered_;
  } catch (const damaged_message&) {
    from.gone = true;
  }
}

bool collection::poll() {
  constexpr double seconds_between_tests = 0.5;
  transport& link = connection();
  const double now = wall_clock();
  const bool test = now - last_test_ > seconds_between_tests;
  if (test) {
    last_test_ = now;
    take_status_messages(job_);
  }
  bool all = true;
  for (task_record& t : job_.tasks) {
    if (t.collected) continue;
    if (const auto message = link.receive(t.id, tag_result)) {
      take(t, *message);
      continue;
    }
    if (test && !t.gone && !is_alive(t)) {
      // What it sent before it went may have come meanwhile.
      if (const auto last = link.receive(t.id, tag_result)) {
        t.gone = false;
        take(t, *last);
      }
    }
    all = all && (t.gone || t.collected);
  }
  return all;
}

/// False, and told: a task has read other data.
bool collection::fits_data(std::size_t which) const {
  const task_result& result = *results_[which];
  if (result.load.trees.empty() || result.taxa == matrix.ntax) return true;
  emit(text_of("P-ZEB: trees of task %i of job %s are for %i taxa, not for the current %i\n",
               static_cast<int>(which), job_.name.c_str(), result.taxa, matrix.ntax));
  return false;
}

/// False: there was no room for some trees.
bool collection::store_results() {
  bool all_stored = true;
  if (job_.taxa != matrix.ntax && job_.kind != job_kind::random_sectors &&
      job_.kind != job_kind::exclusive_sectors && job_.kind != job_kind::one_sector) {
    emit(text_of("P-ZEB: results of job %s are for %i taxa, not for the current %i\n",
                 job_.name.c_str(), job_.taxa, matrix.ntax));
    return true;
  }
  const bool sectors = !job_.sectors.empty();
  if (sectors) {
    std::vector<sector_result> best(job_.tasks.size());
    for (std::size_t i = 0; i < results_.size(); ++i)
      if (results_[i] && !results_[i]->load.trees.empty())
        best[i] = {results_[i]->load.trees[0], results_[i]->polytree};
    place_sector_results(job_, best);
  } else {
    for (std::size_t i = 0; i < results_.size(); ++i) {
      if (!results_[i] || !fits_data(i)) continue;
      int first = 0;
      const int stored = store_trees(results_[i]->load, alone_, &first);
      all_stored = all_stored && at(stored) == results_[i]->load.trees.size();
      group_trees(first, first + stored,
                  text_of("Task_%i_%s", static_cast<int>(i), job_.name.c_str()));
    }
  }
  return all_stored;
}

void collection::tell_dead() const {
  std::string numbers;
  for (std::size_t i = 0; i < job_.tasks.size(); ++i)
    if (!job_.tasks[i].collected && job_.tasks[i].gone) numbers += " " + std::to_string(i);
  if (!numbers.empty()) emit("NOTE: some tasks had unexpectedly crashed or died:", numbers, "\n");
}

/// Tasks that failed, by what they failed of: mostly all of the same.
void collection::tell_errors() const {
  std::map<std::string, std::string> tasks_by_error;
  for (std::size_t i = 0; i < results_.size(); ++i)
    if (results_[i] && results_[i]->failed)
      tasks_by_error[results_[i]->error] += " " + std::to_string(i);
  for (const auto& [error, numbers] : tasks_by_error)
    emit("NOTE: some tasks ended at an error:", numbers, error.empty() ? "" : "\n      ", error,
         "\n");
}

void collection::finish(const char* why_broken_off) {
  const bool all_stored = store_results();
  for (std::size_t i = 0; i < results_.size(); ++i) {
    if (!results_[i] || !results_[i]->with_text) continue;
    emit(text_of("TEXT-BUFFER FROM TASK %i:\n", static_cast<int>(i)));
    for (const std::string& line : results_[i]->text) emit(line, "\n");
  }
  if (!all_stored)
    emit(
        text_of("NOTE: job %s returned more trees than could be stored\n      Some trees from "
                "slaves were lost\n",
                job_.name.c_str()));
  emit(text_of("Got results from %s (%i slave tasks)\n", job_.name.c_str(), answered_));
  for (std::size_t i = 0; i < job_.tasks.size(); ++i)
    if (job_.tasks[i].value)
      emit(text_of("Task %i returned %.6g\n", static_cast<int>(i), *job_.tasks[i].value));
  tell_dead();
  tell_errors();
  const auto waiting = std::count_if(job_.tasks.begin(), job_.tasks.end(),
                                     [](const task_record& t) { return !t.collected && !t.gone; });
  if (waiting > 0)
    emit(text_of("NOTE: could not get results from %i tasks %s\n", static_cast<int>(waiting),
                 why_broken_off));
  for (task_record& t : job_.tasks)
    if (!t.collected) kill_task(t);
  forget_job(slot_);
}

std::vector<task_record*> all_tasks(job_record& job) {
  std::vector<task_record*> tasks;
  for (task_record& t : job.tasks) tasks.push_back(&t);
  return tasks;
}

void take_spied_trees(job_record& job, const std::vector<task_record*>& tasks) {
  packet_writer question;
  question.put(signal_send_trees);
  for (task_record* const t : tasks) ask_task(*t, question, tag_trees);
  for (task_record* const t : tasks) {
    const auto message = answer_of(*t, tag_trees);
    if (!message) continue;
    try {
      packet_reader from(message->body);
      from.whole();
      int first = 0;
      const int stored = store_trees(tree_load::taken_from(from), true, &first);
      const auto number = static_cast<int>(t - job.tasks.data());
      group_trees(first, first + stored, text_of("Task_%i_%s", number, job.name.c_str()));
      emit(text_of("Got %i trees from task %i of %s\n", stored, number, job.name.c_str()));
    } catch (const damaged_message&) {
      t->gone = true;
    }
  }
}

std::vector<task_record*> read_tasks_after_slash(const std::vector<int>& slots) {
  if (!accept_char('/')) return {};
  if (slots.size() != 1) error_end("Tasks can be specified only for a one job at a time!");
  std::vector<task_record*> tasks;
  for (const int number : read_task_list(slots[0]))
    tasks.push_back(&job_at(slots[0]).tasks[at(number)]);
  return tasks;
}

}  // namespace

std::vector<int> read_task_list(int slot) {
  std::vector<std::uint8_t> marks(job_at(slot).tasks.size(), 0);
  read_list(list_plain, 0, static_cast<int>(marks.size()), "task", marks);
  std::vector<int> numbers;
  for (std::size_t i = 0; i < marks.size(); ++i)
    if (marks[i]) numbers.push_back(static_cast<int>(i));
  return numbers;
}

namespace {

/// Who stops a background run waits for what tasks have found so far; they look at their messages
/// now and then only.
double seconds_to_stop() {
  constexpr double to_answer = 5;
  return 2.0 * parallel.communication_time + to_answer;
}

void collect_in_one_pass(const std::vector<int>& slots, bool stop_first) {
  constexpr useconds_t between = 10'000;  // microseconds
  std::vector<collection> all;
  for (const int slot : slots) all.emplace_back(slot, slots.size() == 1, stop_first);
  const double since = command_seconds();  // without pauses
  const search_running patient;            // a key ends the waiting, not the command
  std::optional<double> stopped;           // without a user: when that was
  const char* why = nullptr;
  for (bool done = false; !done && !why;) {
    done = true;
    int answered = 0;
    int tasks = 0;
    for (collection& c : all) {
      done = c.poll() && done;
      answered += c.answered();
      tasks += c.tasks();
    }
    if (done) break;
    show_progress("Waiting for results", answered, tasks);
    check_interrupt();
    if (interrupted() && !stopped) {
      stopped = command_seconds();
      for (const int slot : slots) send_signal(job_at(slot), signal_stop);
    }
    if (stopped && (!process.background || command_seconds() - *stopped > seconds_to_stop()))
      why = "(user interrupt)";
    if (parallel.get_timeout > 0 && command_seconds() - since > parallel.get_timeout)
      why = "(timed-out)";
    usleep(between);
  }
  clear_progress();
  for (collection& c : all) c.finish(why ? why : "");
  forget_interrupt();
}

}  // namespace

void collect_jobs(const std::vector<int>& slots, bool stop_first, collecting how) {
  const int before = store.ntrees;
  if (how == collecting::in_one_pass) {
    collect_in_one_pass(slots, stop_first);
  } else {
    for (const int slot : slots) collect_in_one_pass({slot}, stop_first);
  }
  if (before > 0 && store.ntrees > before) group_trees(0, before, "PreviousTrees");
}

void get_keyword() {
  const bool stop_first = accept_char('!');
  const std::vector<int> slots = read_jobs();
  expect_end();
  // All of them stop while the first one is waited for.
  for (const int slot : slots)
    if (stop_first) send_signal(job_at(slot), signal_stop);
  collect_jobs(slots, stop_first,
               parallel.mode == back_end::pvm ? collecting::in_one_pass : collecting::one_by_one);
}

void spy_keyword() {
  const std::vector<int> slots = read_jobs();
  const std::vector<task_record*> chosen = read_tasks_after_slash(slots);
  expect_end();
  for (const int slot : slots) {
    job_record& job = job_at(slot);
    if (job.taxa != matrix.ntax) {
      emit(text_of("Skipping spy of job %s (for %i taxa instead of current %i)\n", job.name.c_str(),
                   job.taxa, matrix.ntax));
      continue;
    }
    take_spied_trees(job, chosen.empty() ? all_tasks(job) : chosen);
  }
}

void getbufs_keyword() {
  const std::vector<int> slots = read_jobs();
  const std::vector<task_record*> chosen = read_tasks_after_slash(slots);
  expect_end();
  for (const int slot : slots) {
    job_record& job = job_at(slot);
    emit(text_of("Retrieving text buffer(s) from job %s\n", job.name.c_str()));
    const std::vector<task_record*> asked = chosen.empty() ? all_tasks(job) : chosen;
    for (task_record* const t : asked) ask_task(*t, query_text);
    for (task_record* const t : asked) {
      const auto number = static_cast<int>(t - job.tasks.data());
      const auto message = answer_of_query(*t, query_text);
      if (!message) {
        emit(text_of("\n   Task %i is unresponsive\n", number));
        continue;
      }
      emit(text_of("TEXT-BUFFER FROM TASK %i:\n", number));
      packet_reader from(message->body);
      try {
        for (std::int32_t left = from.whole(); left > 0; --left) emit(from.text(), "\n");
      } catch (const damaged_message&) {
        t->gone = true;
      }
    }
  }
}

}  // namespace zeb
