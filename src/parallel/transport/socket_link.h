// One end of a socket pair between two processes of the program, with messages as its unit.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "parallel/transport/transport.h"

namespace zeb {

/// With what has come and wasn't asked for yet. Closed for good where the other end is, or sends
/// what is no message.
class socket_link {
 public:
  /// Takes the descriptor over. `process` is the one at the other end.
  socket_link(int descriptor, pid_t process) : descriptor_(descriptor), process_(process) {}
  socket_link(const socket_link&) = delete;
  socket_link& operator=(const socket_link&) = delete;
  ~socket_link();

  int descriptor() const { return descriptor_; }
  pid_t process() const { return process_; }
  bool is_open() const { return descriptor_ >= 0; }
  /// What has come, without waiting.
  void take_in();
  /// `task` is what the message is found by at the other end. Waits for room; `may_wait` is asked
  /// once a second while the other end takes nothing. False: the other end is gone.
  bool send(task_id task, int tag, std::span<const std::byte> body,
            const std::function<bool(double)>& may_wait);
  /// The oldest of what was taken in, of that task and tag.
  std::optional<arrived_message> next(task_id task = any_task, int tag = any_tag);

 private:
  void shut();
  void split();
  bool put_out(std::span<const std::byte> bytes, const std::function<bool(double)>& may_wait);

  int descriptor_;
  pid_t process_;
  std::vector<std::byte> bytes_;  // of a message that hasn't come whole
  std::deque<arrived_message> inbox_;
};

using socket_pair = std::array<int, 2>;  // here, there
/// False: there are no more descriptors.
bool make_pair(socket_pair& pair);

}  // namespace zeb
