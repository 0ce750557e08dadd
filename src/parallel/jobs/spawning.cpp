#include "parallel/jobs/spawning.h"

#include <unistd.h>

#include <algorithm>
#include <limits>
#include <new>
#include <numeric>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/process.h"
#include "base/random.h"
#include "console/output.h"
#include "macro/macro_state.h"
#include "matrix/matrix.h"
#include "parallel/hosts/host_groups.h"
#include "parallel/jobs/liveness.h"
#include "parallel/settings.h"
#include "parallel/tasks/parent_watch.h"
#include "parallel/tasks/session_text.h"
#include "parallel/tasks/task_state.h"
#include "parallel/tasks/tree_loads.h"
#include "parallel/transport/connection.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr double megabyte = 1'000'000;

/// A number from 1 to the largest seed.
int drawn_seed() { return std::max(draw(), 1); }

/// Each host gets the quotient, and the first ones one more each for the remainder.
std::vector<host_share> shares_of(const job_request& request) {
  std::vector<host_share> shares = request.hosts;
  if (shares.empty()) {
    // The libraries of the others place tasks by themselves.
    if (parallel.mode != back_end::pvm) return {{-1, request.tasks}};
    for (const int host : usual_hosts()) shares.push_back({host, 0});
  }
  const bool told =
      std::all_of(shares.begin(), shares.end(), [](const host_share& s) { return s.tasks > 0; });
  if (told) return shares;
  const int hosts = static_cast<int>(shares.size());
  for (int i = 0; i < hosts; ++i)
    shares[at(i)].tasks = request.tasks / hosts + (i < request.tasks % hosts ? 1 : 0);
  return shares;
}

std::vector<task_record> start_tasks(const job_request& request) {
  transport& link = connection();
  std::vector<task_record> tasks;
  for (const host_share& share : shares_of(request)) {
    if (share.tasks == 0) continue;
    const std::vector<task_id> ids = link.spawn({.count = share.tasks,
                                                 .host_id = id_of_host(share.host),
                                                 .argument = task_argument(),
                                                 .parent = address_of_this_process(),
                                                 .keep_errors = parallel.catch_output});
    for (const task_id id : ids) {
      task_record started;
      started.id = id;
      started.host = std::max(share.host, 0);
      tasks.push_back(std::move(started));
    }
  }
  return tasks;
}

void tell_missing_tasks(const job_request& request, std::size_t started) {
  const bool all = started == at(request.tasks);
  set_exit_status(all ? 1 : 0);
  if (all) return;
  const std::string why = connection().fault();
  if (started == 0)
    error_end(
        "P-ZEB: couldn't spawn any jobs!\nMake sure that \"zeb\" is copied onto the right "
        "directories" +
        (why.empty() ? why : " (" + why + ")"));
  report_line("spawned only", started, "of", request.tasks, "tasks", why);
}

void tell_spawn(const job_request& request, std::size_t tasks) {
  const int count = static_cast<int>(tasks);
  if (parallel.mode == back_end::pvm) {
    emit(text_of("P-ZEB: Spawned job %s (%i tasks)\n", request.name.c_str(), count));
  } else {
    emit(text_of("P-ZEB: Spawned job \"%s\" (%i %s)\n", request.name.c_str(), count,
                 count == 1 ? "task" : "tasks"));
  }
}

std::uint64_t bytes_of(double megabytes) {
  return megabytes > 0 ? static_cast<std::uint64_t>(megabytes * megabyte) : arena.size;
}

std::vector<std::int32_t> ids_of(const std::vector<task_record>& tasks) {
  std::vector<std::int32_t> ids;
  for (const task_record& t : tasks) ids.push_back(t.id);
  return ids;
}

/// Of those that have said hello: their siblings then see at once that one is dead.
std::vector<std::string> addresses_of(const std::vector<task_record>& tasks) {
  std::vector<std::string> addresses;
  for (const task_record& t : tasks)
    addresses.push_back(t.process > 0 ? std::to_string(t.process) + "@" + t.host_name : "");
  return addresses;
}

void send(task_record& to, int tag, const packet_writer& message) {
  if (!to.gone && !connection().send(to.id, tag, message.bytes())) to.gone = true;
}

}  // namespace

task_orders orders_of_session() {
  task_orders orders;
  orders.communication_time = parallel.communication_time;
  orders.timeout = parallel.get_timeout;
  orders.raw_encoding = parallel.raw_encoding;
  orders.host = name_of_this_machine();
  orders.process = getpid();
  orders.hosts = hosts_to_send();
  orders.taxa = matrix.ntax;
  orders.characters = matrix.nchar;
  orders.cell_bytes = matrix.cell_bytes;
  orders.data = data_as_commands();
  orders.settings = settings_as_commands();
  return orders;
}

task_packet packet_of_task(int number, const std::vector<int>& trees, bool with_groups) {
  task_packet packet;
  packet.seed = drawn_seed();
  packet.macro_seed = drawn_seed();
  packet.number = number;
  packet.level = task.level + 1;
  if (process.slave) {
    packet.parents = task.parents;
    packet.parents.insert(packet.parents.begin(), task.number);
  }
  packet.load = selected_trees(trees, with_groups);
  return packet;
}

std::vector<std::vector<int>> trees_for(const job_request& request, int tasks, bool again) {
  if (request.swap != swap_orders::way::none)
    return std::vector<std::vector<int>>(at(tasks), {request.swapped_tree});
  if (!request.sector_orders.empty()) return std::vector<std::vector<int>>(at(tasks));
  return trees_of_tasks(request.trees, tasks, again);
}

swap_orders swap_orders_for(swap_orders::way how, const std::vector<int>& tasks,
                            const std::vector<task_record>& all) {
  if (how == swap_orders::way::none) return {};
  return {how, {tasks.begin(), tasks.end()}, addresses_of(all)};
}

namespace {

void tell_swap(const job_request& request) {
  emit(text_of("Sending tree %i to all tasks, for parallel TBR\n", request.swapped_tree));
}

/// MPI takes blocks of memory, of which one can't be had or would be too long.
[[noreturn]] void cannot_pack(std::size_t blocks) {
  error_end_f("P-ZEB: Allocation failure: not enough RAM available for MPI data pack (%i)",
              static_cast<int>(blocks));
}

template <class contents>
void send_packed(task_record& to, int tag, const contents& message) {
  constexpr std::size_t longest_block = std::numeric_limits<std::int32_t>::max();
  const bool in_blocks = parallel.mode == back_end::mpi;
  try {
    const packet_writer packed = message.packed();
    if (in_blocks && packed.bytes().size() > longest_block)
      cannot_pack(packed.bytes().size() / longest_block + 1);
    send(to, tag, packed);
  } catch (const std::bad_alloc&) {
    if (in_blocks) cannot_pack(1);
    throw;
  }
}

void send_orders(const job_request& request, job_record& job,
                 const std::vector<std::vector<int>>& trees) {
  task_orders orders;
  if (request.sector_orders.empty()) {
    orders = orders_of_session();
    orders.from_disk = request.from_disk;
    orders.directory = parallel.disk_directory;
    if (request.from_disk) orders.data.clear();
  }
  const int count = static_cast<int>(job.tasks.size());
  std::vector<int> numbers(at(count));
  std::iota(numbers.begin(), numbers.end(), 0);
  orders.swap = swap_orders_for(request.swap, numbers, job.tasks);
  for (int i = 0; i < count; ++i) {
    task_orders own = request.sector_orders.empty() ? orders : request.sector_orders[at(i)];
    own.ram = bytes_of(request.ram > 0 ? request.ram : parallel.task_ram);
    own.instructions = request.instructions;
    own.tasks = ids_of(job.tasks);
    send_packed(job.tasks[at(i)], tag_data, own);
    task_packet packet = packet_of_task(i, trees[at(i)], request.trees.groups_go_along);
    if (!request.sector_orders.empty()) packet.load.trees = {job.sectors[at(i)].reduced_tree};
    send_packed(job.tasks[at(i)], tag_packet, packet);
  }
}

void enter_job(job_request& request, job_record& job, std::vector<task_record> tasks) {
  job.name = request.name;
  job.taxa = request.sectors.empty() ? matrix.ntax : request.sectors[0].taxa;
  job.hosts = static_cast<int>(hosts_in_use().size());
  job.started = wall_clock();
  job.kind = request.kind;
  job.parts = request.parts;
  if (request.swap != swap_orders::way::none)
    job.score_at_start = score_of_stored_tree(request.swapped_tree);
  job.partial = request.partial;
  job.sectors = std::move(request.sectors);
  job.tasks = std::move(tasks);
  job.active = true;
}

}  // namespace

int spawn_job(job_request request) {
  connection();
  const int slot = free_job_slot();
  job_record& job = job_at(slot);
  std::vector<task_record> tasks = start_tasks(request);
  tell_missing_tasks(request, tasks.size());
  enter_job(request, job, std::move(tasks));
  try {
    await_hellos(job.tasks);
    const std::vector<std::vector<int>> trees =
        trees_for(request, static_cast<int>(job.tasks.size()), false);
    send_orders(request, job, trees);
    if (request.swap != swap_orders::way::none)
      tell_swap(request);
    else if (request.kind == job_kind::whole_trees)
      tell_tree_choice(request.trees, trees);
  } catch (...) {  // an error, or the user: tasks that never get their data would wait for ever
    for (task_record& t : job.tasks) kill_task(t);
    forget_job(slot);
    throw;
  }
  tell_spawn(request, job.tasks.size());
  return slot;
}

}  // namespace zeb
