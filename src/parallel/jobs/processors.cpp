#include "parallel/jobs/processors.h"

#include <unistd.h>

#include <optional>
#include <thread>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/packet.h"
#include "base/process.h"
#include "console/output.h"
#include "parallel/messages/tags.h"
#include "parallel/settings.h"
#include "parallel/tasks/parent_watch.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

/// 0: no answer.
int processors_of_host(int host) {
  constexpr useconds_t between = 10'000;  // microseconds
  constexpr double longest_wait = 30;     // seconds
  // Where it isn't in the host file, a helper for this machine might start on another one.
  if (parallel.mode == back_end::mpi && host == own_host())
    return static_cast<int>(std::thread::hardware_concurrency());
  transport& link = connection();
  const std::vector<task_id> helper = link.spawn({.count = 1,
                                                  .host_id = id_of_host(host),
                                                  .argument = processor_helper_argument(),
                                                  .parent = address_of_this_process()});
  if (helper.empty()) return 0;
  const double since = wall_clock();
  std::optional<arrived_message> reply;
  while (!(reply = link.receive(helper[0], tag_processors)) &&
         wall_clock() - since < longest_wait) {
    check_interrupt();
    if (!link.is_alive(helper[0])) break;
    usleep(between);
  }
  if (!reply) reply = link.receive(helper[0], tag_processors);
  int count = 0;
  try {
    if (reply) count = packet_reader(reply->body).whole();
  } catch (const damaged_message&) {
  }
  packet_writer over;
  over.put(signal_collect);
  link.send(helper[0], tag_signal, over.bytes());
  link.forget(helper);
  return count;
}

}  // namespace

double processors_of_hosts() {
  connection();
  int sum = 0;
  bool all = true;
  const int hosts = static_cast<int>(hosts_in_use().size());
  for (int host = 0; host < hosts; ++host) {
    const int count = processors_of_host(host);
    all = all && count > 0;
    sum += count;
  }
  if (!all) emit("P-ZEB: Note: some hosts seem to be unreachable!\n");
  return sum;
}

}  // namespace zeb
