// `pzeb`: parallel runs. Small keywords are carried out here, the others in jobs/.
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "language/command_strings.h"
#include "language/hooks.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "parallel/commands.h"
#include "parallel/hosts/host_groups.h"
#include "parallel/hosts/host_lists.h"
#include "parallel/jobs/begin_keyword.h"
#include "parallel/jobs/collecting.h"
#include "parallel/jobs/disk_keyword.h"
#include "parallel/jobs/job_table.h"
#include "parallel/jobs/liveness.h"
#include "parallel/jobs/monitoring.h"
#include "parallel/jobs/signalling.h"
#include "parallel/settings.h"
#include "parallel/tasks/task_state.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

void set_mode(back_end which) {
  expect_end();
  if (which == parallel.mode) return;
  if (process.slave) error_end("Can't change parallel mode in a slave!");
  if (active_jobs() > 0) error_end("Can't change parallel mode with pending jobs");
  drop_connection();
  set_back_end(which);
}

void list_hosts() {
  expect_end();
  enter_parallel_mode();
  const std::vector<host_record>& hosts = hosts_in_use();
  emit(text_of("List of hosts (total=%i):\n\n", static_cast<int>(hosts.size())));
  for (std::size_t i = 0; i < hosts.size(); ++i)
    emit(text_of("Host %3i: %12s (arch=%s, tid=%x, speed=%i)\n", static_cast<int>(i),
                 hosts[i].name.c_str(), hosts[i].architecture.c_str(),
                 static_cast<unsigned>(hosts[i].id), hosts[i].speed));
}

void show_status() {
  expect_end();
  if (active_jobs() == 0) {
    report_line("No jobs running");
  }
  for (const int slot : jobs_in_order()) {
    job_record& job = job_at(slot);
    const auto alive = std::count_if(job.tasks.begin(), job.tasks.end(),
                                     [](task_record& t) { return is_alive(t); });
    emit(text_of("Job %i (%s). %i processes spawned, %i ok%s\n", slot, job.name.c_str(),
                 static_cast<int>(job.tasks.size()), static_cast<int>(alive),
                 job.paused ? " (job is paused)" : ""));
  }
  if (!in_parallel_mode()) return;
  for (const host_record& host : hosts_in_use()) report_line("Host", host.name);
}

void close_parallel() {
  expect_end();
  if (active_jobs() > 0) warning("closing parallel mode will kill all active jobs");
  kill_all_jobs();
  leave_parallel_mode();
  report_line("P-ZEB: exitting parallel mode...");
}

void reset_jobs() {
  expect_end();
  if (active_jobs() > 0) error_end("P-ZEB: reset: some jobs are active; can't restart!");
  for (int slot = 0; slot < most_jobs; ++slot) job_at(slot) = {};
}

void set_host_file() {
  if (read_file_name() == 0) error_end("Must give name of host file");
  const std::string name(token());
  expect_end();
  if (parallel.mode != back_end::mpi) error_end("Only MPI uses a host file");
  if (in_parallel_mode()) error_end("The host file must be set before entering parallel mode");
  parallel.host_file = name;
}

void show_load() {
  require_pvm();
  expect_end();
  enter_parallel_mode();
  const std::vector<host_record>& hosts = hosts_in_use();
  std::vector<int> tasks(hosts.size(), 0);
  for (const int slot : jobs_in_order())
    for (const task_record& t : job_at(slot).tasks)
      if (!t.gone && at(t.host) < tasks.size()) ++tasks[at(t.host)];
  emit("Number of tasks running in each host:\n");
  for (std::size_t i = 0; i < hosts.size(); ++i)
    emit(text_of("%s = %i tasks\n", hosts[i].name.c_str(), tasks[i]));
}

void set_communication_time() {
  double seconds = 0;
  const bool given = read_optional_whole(&seconds);
  expect_end();
  if (given) {
    if (seconds < 1 || seconds > 1e6) error_end("Communication time must be 1 second or more");
    if (in_parallel_mode() && static_cast<int>(seconds) != parallel.communication_time)
      error_end("P-ZEB: can't change comm. time once in parallel mode");
    parallel.communication_time = static_cast<int>(seconds);
  }
  emit(text_of("Communication time: %i secs.\n", parallel.communication_time));
}

void set_command_name() {
  std::string name = read_text_to_semicolon();
  expect_end();
  show_command_as(name == "-" ? std::string() : name.substr(0, longest_shown_command));
}

void set_mnemonic() {
  const bool on = accept_char('+');
  const bool off = !on && accept_char('-');
  expect_end();
  if (on || off) parallel.mnemonic = on;
  emit(parallel.mnemonic ? "P-ZEB: remembering values from last \"pzeb wait\"\n"
                         : "P-ZEB: not remembering values from last \"pzeb wait\"\n");
}

void catch_output(bool on) {
  expect_end();
  if (parallel.mode != back_end::pvm)
    return emit("P-ZEB: Ignoring \"catchout\" option (PVM only)\n");
  parallel.catch_output = on;
  emit(on ? "Capturing output to stderr from new jobs\n"
          : "Not capturing output to stderr from new jobs\n");
}

void clean_signals() {
  expect_end();
  emit("...cleaning extra signals...\n");
  int cleaned = 0;
  for (const int slot : jobs_in_order())
    for (task_record& t : job_at(slot).tasks)
      while (connection().receive(t.id, tag_status)) ++cleaned;
  emit(text_of("P-ZEB: cleaned %i uncaught signals...\n", cleaned));
}

void set_task_ram() {
  double megabytes = 0;
  if (accept_char('-')) {
    expect_end();
    parallel.task_ram = 0;
    return report_line("P-ZEB: master will determine RAM needs for slaves");
  }
  if (!read_optional_whole(&megabytes) || megabytes < 1 || megabytes > 1e7)
    error_end("P-ZEB: must give RAM for slaves, in MB");
  expect_end();
  parallel.task_ram = static_cast<int>(megabytes);
  emit(text_of("P-ZEB: slaves will use %i MB of RAM\n", parallel.task_ram));
}

void set_encoding() {
  constexpr std::string_view words[] = {"default", "raw"};
  const int found = read_word() > 0 ? find_keyword(token(), words) : -1;
  if (found < 0) error_end("P-ZEB: expected strings default or raw");
  expect_end();
  parallel.raw_encoding = found == 1;
  report_line(parallel.raw_encoding
                  ? "P-ZEB: transmission uses DataRaw (for a single architecture)"
                  : "P-ZEB: transmission uses DataDefault (for different architectures)");
}

void set_get_timeout() {
  double seconds = 0;
  const bool given = read_optional_whole(&seconds);
  expect_end();
  if (given && seconds >= 1 && seconds < 1e9) parallel.get_timeout = static_cast<int>(seconds);
  report_line("P-ZEB: timeout is", parallel.get_timeout, "secs.");
}

void define_host_groups() {
  require_pvm();
  enter_parallel_mode();
  hgroup_keyword();
}

/// All tasks in the hosts listed.
void signal_hosts(int code, const char* what) {
  require_pvm();
  enter_parallel_mode();
  std::vector<int> hosts;
  for (const host_share& share : read_host_list()) hosts.push_back(share.host);
  expect_end();
  std::ranges::sort(hosts);
  hosts.erase(std::unique(hosts.begin(), hosts.end()), hosts.end());
  if (hosts.empty()) error_end("P-ZEB: no hosts in list");
  for (const int slot : jobs_in_order())
    for (task_record& t : job_at(slot).tasks)
      if (std::ranges::binary_search(hosts, t.host)) send_signal(t, code);
  emit(text_of("P-ZEB: %s all tasks in %i host(s)\n", what, static_cast<int>(hosts.size())));
}

struct keyword_row {
  std::string_view word;
  void (*run)();
  bool whole = false;  // can't be cut
};
constexpr keyword_row keyword_rows[] = {
    {"mpi", [] { set_mode(back_end::mpi); }},
    {"pvm", [] { set_mode(back_end::pvm); }},
    {"begin", begin_keyword},
    {"again", again_keyword},
    {"status", show_status},
    {"close", close_parallel},
    {"get", get_keyword},
    {"getbufs", getbufs_keyword},
    {"spy", spy_keyword},
    {"wait", wait_keyword},
    {"gwait", gwait_keyword},
    {"stop", stop_keyword},
    {"halt", stop_keyword},
    {"kill", kill_keyword},
    {"pause", pause_keyword},
    {"resume", resume_keyword},
    {"hpause", [] { signal_hosts(signal_pause, "paused"); }},
    {"hresume", [] { signal_hosts(signal_resume, "resumed"); }},
    {"hosts", list_hosts},
    {"hfile", set_host_file},
    {"load", show_load},
    {"hgroup", define_host_groups},
    {"tagset", tagset_command},
    {"skipto", skipto_keyword, true},
    {"goto", goto_keyword, true},
    {"commtime", set_communication_time},
    {"cmdname", set_command_name},
    {"mnemonic", set_mnemonic},
    {"catchout", [] { catch_output(true); }},
    {"nocatchout", [] { catch_output(false); }},
    {"cleansig", clean_signals},
    {"reset", reset_jobs},
    {"setdata", setdata_keyword},
    {"setram", set_task_ram},
    {"encode", set_encoding},
    {"timeout", set_get_timeout},
    {"local", [] { set_mode(back_end::local); }},
};

const keyword_row* find_row(std::string_view word) {
  for (const keyword_row& row : keyword_rows)
    if (row.whole ? word == row.word : is_prefix(word, row.word)) return &row;
  return nullptr;
}

void switch_macros_on() {
  if (!macros_on()) run_command_string("macro =;");
}

}  // namespace

void pzeb_command() {
  no_timing();
  switch_macros_on();
  if (skip_blanks_peek() == ';') {
    expect_end();
    return report_line("P-ZEB: mode is", back_end_name(parallel.mode));
  }
  const std::string keyword(read_word() > 0 ? token() : std::string_view());
  const keyword_row* const row = find_row(keyword);
  if (!row)
    error_end(
        parallel.mode == back_end::pvm ? "P-ZEB: unknown keyword:" : "Unrecognized P-ZEB option:",
        keyword);
  row->run();
}

}  // namespace zeb
