#include "parallel/transport/gateway.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "base/packet.h"
#include "parallel/transport/library_errors.h"
#include "parallel/transport/modules.h"
#include "parallel/transport/socket_link.h"

namespace zeb {
namespace {

struct gateway_state {
  std::unique_ptr<socket_link> process;  // that it works for
  std::unique_ptr<transport> tasks;
};
gateway_state state;

void tell_process(task_id from, int tag, std::span<const std::byte> body) {
  state.process->send(from, tag, body, [](double) { return true; });
}

bool relay();

void spawn_tasks(packet_reader request) {
  spawn_request wanted;
  wanted.count = request.whole();
  wanted.host_id = request.whole();
  const std::string argument = request.text();
  wanted.argument = argument.c_str();
  wanted.parent = request.text();
  wanted.meanwhile = [] { relay(); };
  const std::vector<task_id> tasks = state.tasks->spawn(wanted);
  packet_writer reply;
  reply.put_list(tasks);
  reply.put_text(state.tasks->fault());
  tell_process(any_task, gateway_spawned, reply.bytes());
}

void carry_out(const arrived_message& message) {
  if (message.tag == gateway_spawn) {
    spawn_tasks(packet_reader(message.body));
  } else if (message.tag == gateway_forget) {
    state.tasks->forget(packet_reader(message.body).list());
  } else {
    state.tasks->send(message.from, message.tag, message.body);
  }
}

/// Whether anything was to be relayed.
bool relay() {
  bool busy = false;
  state.process->take_in();
  if (!state.process->is_open()) _exit(0);
  while (const auto message = state.process->next()) {
    carry_out(*message);
    busy = true;
  }
  while (const auto message = state.tasks->receive(any_task, any_tag)) {
    tell_process(message->from, message->tag, message->body);
    busy = true;
  }
  return busy;
}

bool start() {
  std::string fault;
  state.tasks = transport_of_module("zeb_mpi", &fault);
  const bool started = state.tasks && state.tasks->enter(false);
  packet_writer told;
  told.put(static_cast<std::int32_t>(started));
  told.put_text(state.tasks ? state.tasks->fault() : fault);
  const std::vector<host_record> hosts =
      started ? state.tasks->hosts() : std::vector<host_record>();
  told.put(static_cast<std::int32_t>(hosts.size()));
  for (const host_record& host : hosts) {
    told.put(host.id);
    told.put_text(host.name);
    told.put_text(host.architecture);
    told.put(host.speed);
  }
  tell_process(any_task, gateway_ready, told.bytes());
  return started;
}

}  // namespace

void run_gateway(int descriptor) {
  fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  state.process = std::make_unique<socket_link>(descriptor, getppid());
  filter_library_errors();
  if (!start()) _exit(1);
  constexpr int longest_wait = 10;  // milliseconds
  for (int wait = 1;;) {
    wait = relay() ? 1 : std::min(wait + 1, longest_wait);
    pollfd message{descriptor, POLLIN, 0};
    poll(&message, 1, wait);
  }
}

}  // namespace zeb
