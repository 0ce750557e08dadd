#include "parallel/tasks/helpers.h"

#include <unistd.h>

#include <optional>
#include <thread>

#include "base/packet.h"
#include "parallel/messages/tags.h"
#include "parallel/tasks/disk_data.h"
#include "parallel/tasks/parent_signals.h"
#include "parallel/tasks/task_state.h"

namespace zeb {
namespace {

arrived_message wait_for_data() {
  constexpr useconds_t between = 100'000;  // microseconds
  for (;;) {
    if (std::optional<arrived_message> message = task.link->receive(parent_task, tag_disk_data))
      return *std::move(message);
    test_parent();
    usleep(between);
  }
}

/// The parent takes the answer before the process goes.
void reply_and_wait(int tag, const packet_writer& reply) {
  task.link->send(parent_task, tag, reply.bytes());
  constexpr useconds_t between = 100'000;
  constexpr int rounds = 100;
  for (int i = 0; i < rounds && !task.link->receive(parent_task, tag_signal); ++i) {
    test_parent();
    usleep(between);
  }
}

}  // namespace

int write_disk_data() {
  const arrived_message message = wait_for_data();
  packet_reader from(message.body);
  std::string problem = "wrong file";
  try {
    const std::string directory = from.text();
    problem = write_disk_file(directory, from.text());
  } catch (const damaged_message&) {
  }
  packet_writer reply;
  reply.put(problem.empty());
  reply.put_text(problem);
  reply_and_wait(tag_disk_reply, reply);
  return 0;
}

int tell_processors() {
  packet_writer reply;
  reply.put(static_cast<std::int32_t>(std::thread::hardware_concurrency()));
  reply_and_wait(tag_processors, reply);
  return 0;
}

}  // namespace zeb
