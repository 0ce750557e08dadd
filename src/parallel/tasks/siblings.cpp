#include "parallel/tasks/siblings.h"

#include <unistd.h>

#include <utility>
#include <vector>

#include "base/indices.h"
#include "base/process.h"
#include "parallel/messages/tags.h"
#include "parallel/tasks/parent_watch.h"
#include "parallel/tasks/task_state.h"
#include "parallel/transport/connection.h"
#include "parallel/transport/processes.h"

namespace zeb {
namespace {

struct sibling {
  task_id id = any_task;
  std::string host;  // empty: it hasn't said anything
  int process = 0;
  double heard = 0;  // wall clock, seconds
};

struct sibling_state {
  std::vector<sibling> known;  // by task number
};
sibling_state state;

sibling& sibling_at(int number) {
  if (state.known.size() != task.siblings.size()) {
    state.known.assign(task.siblings.size(), {});
    for (std::size_t i = 0; i < state.known.size(); ++i) {
      state.known[i].id = task.link->sibling(static_cast<int>(i), task.siblings);
      if (i < task.swap.addresses.size())
        state.known[i].process = process_on_this_machine(task.swap.addresses[i]);
      if (state.known[i].process > 0) state.known[i].host = name_of_this_machine();
      state.known[i].heard = wall_clock();
    }
  }
  return state.known[at(number)];
}

bool runs(const sibling& which) {
  return which.process <= 0 || which.host != name_of_this_machine() || process_runs(which.process);
}

}  // namespace

bool send_to_sibling(int number, swap_message message) {
  message.host = name_of_this_machine();
  message.process = static_cast<int>(getpid());
  return task.link->send(sibling_at(number).id, tag_swap, message.packed().bytes());
}

bool send_to_sibling(int number, swap_word what, int version) {
  swap_message message;
  message.word = what;
  message.version = version;
  return send_to_sibling(number, std::move(message));
}

std::optional<swap_message> message_of_sibling(int number) {
  sibling& from = sibling_at(number);
  while (const auto message = task.link->receive(from.id, tag_swap)) {
    try {
      swap_message read = swap_message::unpacked(packet_reader(message->body));
      from.host = read.host;
      from.process = read.process;
      from.heard = wall_clock();
      return read;
    } catch (const damaged_message&) {
      // Nothing can be learnt from it.
    }
  }
  return std::nullopt;
}

bool is_sibling_there(int number) {
  constexpr double longest_silence = 120;  // seconds
  const sibling& which = sibling_at(number);
  if (!task.link->is_alive(which.id) || !runs(which)) return false;
  return which.host == name_of_this_machine() || wall_clock() - which.heard < longest_silence;
}

bool is_sibling_process_there(task_id id) {
  for (const sibling& which : state.known)
    if (which.id == id) return runs(which);
  return true;
}

}  // namespace zeb
