// `pzeb begin` and `pzeb again`: jobs begin, and go on with other instructions.
#include "parallel/jobs/begin_keyword.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "parallel/hosts/host_lists.h"
#include "parallel/jobs/instruction_text.h"
#include "parallel/jobs/liveness.h"
#include "parallel/jobs/sector_jobs.h"
#include "parallel/jobs/sector_requests.h"
#include "parallel/jobs/spawning.h"
#include "parallel/settings.h"
#include "parallel/transport/connection.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

std::string read_new_name() {
  const int first = skip_blanks_peek();
  if (std::isdigit(first)) error_end("P-ZEB: cannot name parallel jobs starting with a digit");
  if (!std::isalpha(first) && first != '_')
    error_end_f("Expected a job name (found symbol \"%c\" instead)", first);
  return read_job_name();
}

void expect_sign_after_hosts(const std::string& job) {
  const int next = skip_blanks_peek();
  if (next != '=' && next != '/')
    error_end_f("P-ZEB: expected '=' or '/' after list of hosts for job %s", job.c_str());
}

void read_hosts(job_request& request) {
  if (parallel.mode != back_end::pvm) {
    if (skip_blanks_peek() != ';' && (read_name() == 0 || token() != "myself"))
      error_end("P-ZEB: must write \"myself\" before \"=\"  to run just in localhost");
    request.hosts = {{own_host(), request.tasks}};
    return expect_sign_after_hosts(request.name);
  }
  request.hosts = read_host_list();
  expect_sign_after_hosts(request.name);
  if (request.hosts.empty())
    error_end_f("P-ZEB: no hosts in list for job %s", request.name.c_str());
  int sum = 0;
  for (const host_share& share : request.hosts) sum += share.tasks;
  if (sum == 0) return;
  for (host_share& share : request.hosts) {
    if (share.tasks == 0) ++sum;
    share.tasks = std::max(share.tasks, 1);
  }
  if (sum > most_tasks) error_end("P-ZEB: sorry, cannot spawn more than", most_tasks, "together");
  if (sum == request.tasks) return;
  warning(
      text_of("Total number of jobs doesn't equal sum of jobs in slaves\nNumber of jobs will be "
              "reset to the sum (%i)",
              sum));
  request.tasks = sum;
}

void read_count_and_hosts(job_request& request) {
  const int next = skip_blanks_peek();
  if (next == '=' || next == '/') return;
  double tasks = 0;
  if (!read_optional_whole(&tasks) || tasks < 1) error_end("P-ZEB: must give number of tasks");
  if (tasks > most_tasks) error_end("P-ZEB: sorry, cannot spawn more than", most_tasks, "together");
  request.tasks = static_cast<int>(tasks);
  const int after = skip_blanks_peek();
  if (after != '=' && after != '/') read_hosts(request);
}

void read_ram(job_request& request) {
  constexpr double megabyte = 1'000'000;
  const bool factor = accept_char('x');
  double value = 0;
  if (!read_optional_float(&value) || !(value > 0)) error_end("P-ZEB: must give RAM for slaves");
  request.ram = factor ? value * static_cast<double>(arena.size) / megabyte : value;
}

enum begin_option {
  ram_option,
  trees_option,
  tgroups_option,
  notrees_option,
  sector_option,
  swap_option,
  dskdata_option,
  deltrees_option
};

struct begin_options {
  sector_request sector;
  bool has_sector = false;
  bool delete_trees = false;
};

void read_trees_option(job_request& request, const begin_options& options) {
  if (options.has_sector) error_end("P-ZEB: can't select \"trees\" (already selected \"sector\")");
  if (request.swap != swap_orders::way::none)
    error_end("P-ZEB: can't select \"trees\" (already selected \"swap\")");
  read_tree_selection(request.trees);
}

void read_sector_option(job_request& request, begin_options& options) {
  if (request.trees.how != tree_choice::way::unsaid)
    error_end("P-ZEB: can't do \"sectors\" (\"trees\" selected already)");
  if (request.swap != swap_orders::way::none)
    error_end("P-ZEB: can't use \"swap\" and \"sector\" together");
  options.sector = read_sector_request();
  options.has_sector = true;
}

/// "N", "-N" or "+N".
void read_swap_option(job_request& request, const begin_options& options) {
  if (options.has_sector) error_end("P-ZEB: can't use \"swap\" and \"sector\" together");
  if (request.trees.how != tree_choice::way::unsaid)
    error_end("P-ZEB: can't \"swap\" (\"trees\" selected already)");
  request.swap = accept_char('-')   ? swap_orders::way::unsorted
                 : accept_char('+') ? swap_orders::way::controlled
                                    : swap_orders::way::sorted;
  double number = 0;
  if (!read_optional_whole(&number) || number < 0) error_end("P-ZEB: must give the tree to swap");
  if (number >= store.ntrees)
    error_end_f("P-ZEB: cannot swap tree %i (only %i trees in memory)",
                static_cast<int>(std::min(number, 1e9)), store.ntrees);
  request.swapped_tree = static_cast<int>(number);
}

void read_options(job_request& request, begin_options& options, bool again) {
  constexpr std::string_view words[] = {"ram",    "trees", "tgroups", "notrees",
                                        "sector", "swap",  "dskdata", "deltrees"};
  while (accept_char('/')) {
    const std::string word(read_word() > 0 ? token() : std::string_view());
    const int found = find_keyword(word, words);
    if (found < 0 || (found == deltrees_option && !again))
      error_end_f("P-ZEB: unrecognized keyword for spawn options of job %s: %s",
                  request.name.c_str(), word.c_str());
    if (again && (found == ram_option || found == sector_option || found == dskdata_option))
      error_end_f("P-ZEB: \"%s\" is for new jobs only", std::string(words[at(found)]).c_str());
    switch (found) {
      case ram_option:
        read_ram(request);
        break;
      case trees_option:
        read_trees_option(request, options);
        break;
      case tgroups_option:
        request.trees.groups_go_along = true;
        break;
      case notrees_option:
        request.trees.how = tree_choice::way::none;
        break;
      case sector_option:
        read_sector_option(request, options);
        break;
      case swap_option:
        read_swap_option(request, options);
        break;
      case dskdata_option:
        request.from_disk = true;
        emit("\nNote: data will be read from disk, not transferred.\n");
        break;
      default:
        options.delete_trees = true;
    }
  }
  if (!accept_char('='))
    error_end_f("P-ZEB: expected '=' or '/' after list of hosts for job %s", request.name.c_str());
}

/// Tasks of a job that exists: those of "0 2-3", all without a list.
std::vector<int> read_tasks(const job_record& job) {
  std::vector<std::uint8_t> marks(job.tasks.size(), 0);
  const int next = skip_blanks_peek();
  const bool given = next != '=' && next != '/' &&
                     read_list(list_slash_ends, 0, static_cast<int>(marks.size()), "task", marks);
  std::vector<int> tasks;
  for (std::size_t i = 0; i < marks.size(); ++i)
    if (!given || marks[i]) tasks.push_back(static_cast<int>(i));
  return tasks;
}

void send_again(job_record& job, const std::vector<int>& chosen, const job_request& request,
                bool delete_trees) {
  const std::vector<std::vector<int>> trees =
      trees_for(request, static_cast<int>(chosen.size()), true);
  std::vector<int> parties = chosen;
  std::erase_if(parties, [&job](int number) { return !is_alive(job.tasks[at(number)]); });
  if (request.swap != swap_orders::way::none && (parties.empty() || parties[0] != 0))
    error_end("P-ZEB: task 0, which leads the swap, must be among the tasks of job", job.name);
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    task_record& to = job.tasks[at(chosen[i])];
    if (!is_alive(to)) continue;
    packet_writer orders;
    orders.put(delete_trees);
    orders.put_text(request.instructions);
    swap_orders_for(request.swap, parties, job.tasks).put_into(orders);
    send_signal(to, signal_again);
    transport& link = connection();
    const task_packet packet = packet_of_task(chosen[i], trees[i], request.trees.groups_go_along);
    const bool sent = link.send(to.id, tag_data, orders.bytes()) &&
                      link.send(to.id, tag_packet, packet.packed().bytes());
    to.gone = !sent;
    to.collected = false;
    to.status.reset();
  }
}

}  // namespace

void begin_keyword() {
  require_data("starting parallel jobs");
  enter_parallel_mode();
  job_request request;
  request.name = read_new_name();
  if (find_job(request.name) >= 0)
    error_end("P-ZEB: there is a job named", request.name, "already");
  if (active_jobs() >= most_jobs)
    error_end_f("P-ZEB: cannot run more than %i jobs at the same time!", most_jobs);
  read_count_and_hosts(request);
  begin_options options;
  read_options(request, options, false);
  request.instructions = read_instructions(false);
  if (options.has_sector) make_sector_job(options.sector, request);
  if (request.tasks == 0) request.tasks = static_cast<int>(usual_hosts().size());
  spawn_job(std::move(request));
}

void again_keyword() {
  if (active_jobs() == 0) error_end("P-ZEB: no parallel job is running");
  job_record& job = job_at(read_job());
  const std::vector<int> tasks = read_tasks(job);
  job_request request;
  request.name = job.name;
  begin_options options;
  read_options(request, options, true);
  request.instructions = read_instructions(true);
  send_again(job, tasks, request, options.delete_trees);
}

}  // namespace zeb
