#include "parallel/jobs/job_table.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "base/errors.h"
#include "base/indices.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/list_kinds.h"
#include "language/lists.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

struct job_table {
  std::array<job_record, most_jobs> jobs;
  int last_sequence = 0;
};
job_table table;

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

std::string read_job_name() {
  constexpr std::string_view ends = "/=;]";
  std::string name;
  for (int c = read_char(); c > 32 && ends.find(static_cast<char>(c)) == ends.npos;
       c = read_char()) {
    name += static_cast<char>(c);
    if (name.size() > longest_job_name)
      error_end_f("P-ZEB: the name of a job has at most %i letters",
                  static_cast<int>(longest_job_name));
    if (input_ended()) break;
  }
  unread_char();
  return name;
}

int read_job(bool also_past) {
  double number = -1;
  const int first = skip_blanks_peek();
  if (std::isalpha(first) || first == '_') {
    const std::string name = read_job_name();
    int slot = find_job(name);
    for (int past = 0; also_past && slot < 0 && past < most_jobs; ++past)
      if (job_at(past).name == name) slot = past;
    if (slot < 0) error_end("No job named", name);
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
                          },
                      .special_word = find_job});  // "j1" isn't short for "j10" where it is a job
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

}  // namespace zeb
