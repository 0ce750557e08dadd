// Jobs of parallel runs and what their tasks do.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/process.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "language/lexer.h"
#include "language/options.h"
#include "macro/assignment.h"
#include "macro/macro_values.h"
#include "parallel/hosts/host_groups.h"
#include "parallel/jobs/job_table.h"
#include "parallel/jobs/liveness.h"
#include "parallel/jobs/monitoring.h"
#include "parallel/jobs/processors.h"
#include "parallel/jobs/queries.h"
#include "parallel/jobs/sector_jobs.h"
#include "parallel/jobs/spawning.h"
#include "parallel/settings.h"
#include "parallel/tasks/task_state.h"
#include "parallel/transport/connection.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// "J" or "J K" up to "]".
struct job_argument {
  job_record* job = nullptr;
  int task = -1;  // -1: all
};

int read_task(const job_record& job) {
  const int number = whole_argument();
  if (number < 0 || at(number) >= job.tasks.size())
    error_end_f("P-ZEB: no task %i in job %s", number, job.name.c_str());
  return number;
}

job_argument read_job_and_task() {
  open_brackets();
  job_argument argument{&job_at(read_job()), -1};
  if (skip_blanks_peek() != ']') argument.task = read_task(*argument.job);
  close_brackets();
  return argument;
}

job_record& read_job_alone() {
  open_brackets();
  job_record& job = job_at(read_job());
  close_brackets();
  return job;
}

/// What the tasks chosen tell: kept up by `wait`, else asked for.
std::vector<task_status> statuses_of(const job_argument& chosen) {
  job_record& job = *chosen.job;
  std::vector<task_record*> tasks;
  for (std::size_t i = 0; i < job.tasks.size(); ++i)
    if (chosen.task < 0 || at(chosen.task) == i) tasks.push_back(&job.tasks[i]);
  return statuses_of_tasks(tasks);
}

double sum_over(double (*value)(const task_status&)) {
  double sum = 0;
  for (const task_status& s : statuses_of(read_job_and_task())) sum += value(s);
  return sum;
}

double rearrangements_of(const task_status& s) {
  return static_cast<double>(s.rearrangements_high) * 1e9 +
         static_cast<double>(s.rearrangements_low);
}

double best_of(const std::vector<task_status>& all) {
  double best = -1;
  for (const task_status& s : all)
    if (s.score >= 0 && (best < 0 || s.score < best)) best = s.score;
  return best;
}

double tasks_at_tag() {
  open_brackets();
  const int tag = whole_argument();
  job_argument chosen{&job_at(read_job()), -1};
  if (skip_blanks_peek() != ']') chosen.task = read_task(*chosen.job);
  close_brackets();
  double count = 0;
  for (const task_status& s : statuses_of(chosen)) count += s.finished || s.tag >= tag;
  return count;
}

double best_score() { return best_of(statuses_of(read_job_and_task())); }
double replications_done() {
  return sum_over([](const task_status& s) { return static_cast<double>(s.replications); });
}
double rearrangements_done() { return sum_over(rearrangements_of); }
double trees_found() {
  return sum_over([](const task_status& s) { return static_cast<double>(s.trees); });
}
double sum_of_tags() {
  return sum_over([](const task_status& s) { return static_cast<double>(s.tag); });
}

/// Of a job that improves trees: the most that a task has won. In a task that searches a sector:
/// what the whole tree has more than the sector.
double score_improvement() {
  if (!brackets_follow() && task.is_sector) return task.score_offset;
  const job_argument chosen = read_job_and_task();
  const job_record& job = *chosen.job;
  const std::vector<task_status> statuses = statuses_of(chosen);
  double most = 0;
  for (std::size_t i = 0; i < statuses.size(); ++i) {
    const std::size_t number = chosen.task < 0 ? i : at(chosen.task);
    const double start =
        job.sectors.empty() ? job.score_at_start : job.sectors[number].score_at_start;
    if (start >= 0 && statuses[i].score >= 0) most = std::max(most, start - statuses[i].score);
  }
  return most;
}

double algorithm() {
  int highest = stage_unknown;
  for (const task_status& s : statuses_of(read_job_and_task()))
    highest = std::max(highest, s.stage);
  return highest;
}

double tasks_in_algorithm() {
  constexpr std::string_view words[] = {"none",  "wag",     "spr",    "tbr",   "sect",
                                        "drift", "ratchet", "fusing", "pinon", "done"};
  open_brackets();
  const job_argument chosen{&job_at(read_job()), -1};
  const std::string word(read_word() > 0 ? token() : std::string_view());
  const int wanted = word.empty() ? -1 : find_keyword(word, words);
  if (wanted < 1)
    error_end_f(
        "P-ZEB: expected strings wag, spr, tbr, sect, drift, ratchet\nfusing, pinon, or done, "
        "before closing bracket -found %s",
        word.c_str());
  close_brackets();
  double count = 0;
  for (const task_status& s : statuses_of(chosen)) count += s.stage == wanted;
  return count;
}

double tasks_below() {
  open_brackets();
  const job_argument chosen{&job_at(read_job()), -1};
  if (skip_blanks_peek() == ']') error_end("Must give score to match or better");
  const double score = macro_value();
  close_brackets();
  double count = 0;
  for (const task_status& s : statuses_of(chosen)) count += s.score >= 0 && s.score <= score;
  return count;
}

double tasks_with_errors() {
  double count = 0;
  for (const task_status& s : statuses_of({&read_job_alone(), -1})) count += s.command == "ERROR";
  return count;
}

double tasks_of_job() { return static_cast<double>(read_job_alone().tasks.size()); }

double tasks_running() {
  double count = 0;
  for (const task_status& s : statuses_of({&read_job_alone(), -1})) count += !s.finished;
  return count;
}

double tasks_received() {
  const job_record& job = read_job_alone();
  return static_cast<double>(std::ranges::count_if(
      job.tasks, [](const task_record& t) { return t.status.has_value() || t.collected; }));
}

double all_running_tasks() {
  double count = 0;
  for (const int slot : jobs_in_order())
    count += static_cast<double>(
        std::ranges::count_if(job_at(slot).tasks, [](task_record& t) { return is_alive(t); }));
  return count;
}

double per_cent_done() {
  const std::vector<task_status> all = statuses_of(read_job_and_task());
  const auto finished = std::ranges::count_if(all, [](const task_status& s) { return s.finished; });
  return all.empty() ? 0 : 100.0 * static_cast<double>(finished) / static_cast<double>(all.size());
}

/// Also after `get`, which has the job forgotten.
double returned_value() {
  open_brackets();
  const int slot = read_job(true);
  job_record& job = job_at(slot);
  const int number = read_task(job);
  close_brackets();
  const std::optional<double> value = value_of_task(job.tasks[at(number)]);
  if (!value) error_end_f("P-ZEB: task %i of job %s returned no value", number, job.name.c_str());
  return *value;
}

double seconds_running() { return wall_clock() - read_job_and_task().job->started; }

double host_of_task() {
  const job_argument chosen = read_job_and_task();
  if (chosen.task < 0) error_end("Must give the task");
  return chosen.job->tasks[at(chosen.task)].host;
}

int host_argument() {
  connection();
  const int host = whole_argument();
  if (host < 0 || at(host) >= hosts_in_use().size()) error_end("No host", host);
  return host;
}

double tasks_in_host() {
  open_brackets();
  const int host = host_argument();
  close_brackets();
  double count = 0;
  for (const int slot : jobs_in_order())
    for (task_record& t : job_at(slot).tasks) count += t.host == host && is_alive(t);
  return count;
}

double load_of_host() {
  require_pvm();
  return tasks_in_host();
}
double is_in_host_group() {
  require_pvm();
  open_brackets();
  const int group = whole_argument();
  if (group < 0 || group >= most_host_groups) error_end("No host group", group);
  const int host = host_argument();
  close_brackets();
  return in_host_group(host, group) ? 1 : 0;
}

double speeds_of_hosts() {
  if (brackets_follow()) bracketed_whole_values(0, 2);
  connection();
  std::vector<double> speeds;
  for (const host_record& host : hosts_in_use()) speeds.push_back(host.speed);
  return write_list("speed", speeds);
}

double hosts() {
  if (!in_parallel_mode()) return 0;
  return static_cast<double>(hosts_in_use().size());
}
double jobs() { return active_jobs(); }
double level() { return task.level; }
double mode() { return in_parallel_mode() ? static_cast<double>(parallel.mode) : 0; }
double wait_succeeded() { return last_wait_succeeded() ? 1 : 0; }

/// Of this process, or of its parent N.
double task_number() {
  if (!brackets_follow()) return task.number;
  open_brackets();
  const int parent = whole_argument();
  if (!accept_char(']')) error_end("Expected closing bracket for \"slavenum\"");
  if (parent == 0) return task.number;
  if (parent < 0 || at(parent) > task.parents.size()) error_end("No parent", parent);
  return task.parents[at(parent) - 1];
}

double all_processors() {
  if (process.slave) error_end("Sorry, cannot access \"totcpus\" in slaves");
  return processors_of_hosts();
}

/// How many exclusive sectors N divisions of tree T make.
double parts_of_tree() {
  const std::vector<double> values = bracketed_whole_values(2, 2);
  constexpr int most = 64;
  if (values[0] < 1 || values[0] > most)
    error_end("P-ZEB: must give number of exclusive sectors (1-64)");
  const int tree = static_cast<int>(std::min(values[1], 1e9));
  require_trees();
  check_tree_number(tree);
  return exclusive_parts(static_cast<int>(values[0]), false, tree);
}

// clang-format off
constexpr expression_function rows[] = {
    {"attag", "[G J K]", "1 if the tag of task K of job J is at least G; without K (optional), how many tasks", tasks_at_tag, function_list::parallel},
    {"bestscore", "[J K]", "best score of task K of job J", best_score, function_list::parallel},
    {"deltascore", "[J]", "improvement of score in job J", score_improvement, function_list::parallel},
    {"hostload", "[H]", "load of host H", load_of_host, function_list::parallel},
    {"isinhgroup", "[G H]", "1 if host H is in host group G", is_in_host_group, function_list::parallel},
    {"ntasksbelow", "[J S]", "tasks of job J with best score at or below S", tasks_below, function_list::parallel},
    {"numerrors", "[J]", "errors in job J", tasks_with_errors, function_list::parallel},
    {"numhosts", "", "number of hosts", hosts, function_list::parallel},
    {"numjobs", "", "number of jobs", jobs, function_list::parallel},
    {"numrearrangs", "[J K]", "rearrangements done by task K of job J", rearrangements_done, function_list::parallel},
    {"numreps", "[J K]", "replications done by task K of job J", replications_done, function_list::parallel},
    {"numtasks", "[J]", "tasks of job J", tasks_of_job, function_list::parallel},
    {"numtrees", "[J K]", "trees found by task K of job J", trees_found, function_list::parallel},
    {"percdone", "[J K]", "percentage done by task K of job J", per_cent_done, function_list::parallel},
    {"pexstatus", "[J K]", "exit status of task K of job J", returned_value, function_list::parallel},
    {"plevel", "", "number of parents: 0 for the master", level, function_list::parallel},
    {"pmode", "", "0 not parallel, 1 PVM, 2 MPI, 3 tasks on this machine only", mode, function_list::parallel},
    {"runtime", "[J K]", "seconds that task K of job J has run", seconds_running, function_list::parallel},
    {"schalg", "[J K]", "algorithm that task K of job J is in", algorithm, function_list::parallel},
    {"slavenum", "[N]", "task number of this process, or of its parent N (optional)", task_number, function_list::parallel},
    {"speed", "[...]", "list of speeds of the hosts", speeds_of_hosts, function_list::parallel},
    {"tagsum", "[J]", "sum of the tags of job J", sum_of_tags, function_list::parallel},
    {"tasksatsch", "[J alg]", "tasks of job J in algorithm alg", tasks_in_algorithm, function_list::parallel},
    {"tasksin", "[H]", "tasks in host H", tasks_in_host, function_list::parallel},
    {"tasksleft", "[J]", "tasks of job J still running", tasks_running, function_list::parallel},
    {"tasksrecvd", "[J]", "tasks of job J received", tasks_received, function_list::parallel},
    {"tasktoh", "[J K]", "host of task K of job J", host_of_task, function_list::parallel},
    {"totcpus", "", "processors of all hosts", all_processors, function_list::parallel},
    {"treeparts", "[N T]", "exclusive sectors that N divisions of tree T make", parts_of_tree, function_list::parallel},
    {"waitsuccess", "", "0 when the last wait ended on its time-out", wait_succeeded, function_list::parallel},
    {"acttasks", "", "tasks that are running", all_running_tasks, function_list::unlisted},
};
// clang-format on

}  // namespace

const std::span<const expression_function> job_functions = rows;

}  // namespace zeb
