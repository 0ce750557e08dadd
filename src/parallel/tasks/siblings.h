// The other tasks of a job, which a task can talk to as well as to its parent.
#pragma once

#include <optional>
#include <string>

#include "parallel/messages/swap_message.h"
#include "parallel/transport/transport.h"

namespace zeb {

/// False: it isn't there any more. The message tells who sends it.
bool send_to_sibling(int number, swap_message message);
bool send_to_sibling(int number, swap_word what, int version = 0);
/// The oldest message of task `number`; none: nothing has come. Damaged ones are dropped.
std::optional<swap_message> message_of_sibling(int number);
/// Is it there? On this machine its process is looked at, elsewhere long silence counts.
bool is_sibling_there(int number);
/// Does the process of that task run, where it is one of these and on this machine?
bool is_sibling_process_there(task_id task);

}  // namespace zeb
