// How messages get from one process to another: over MPI, over PVM, or over sockets of this
// machine. The libraries are used by modules that are loaded when first needed, so this header
// needs no other one, and nothing here is defined elsewhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace zeb {

/// A process that this one can send to. The numbers are the transport's.
using task_id = std::int32_t;
constexpr task_id parent_task = -1;
constexpr task_id any_task = -2;
constexpr int any_tag = -1;

struct host_record {
  int id = 0;
  std::string name;
  std::string architecture;
  int speed = 1000;
};

struct arrived_message {
  task_id from = any_task;
  int tag = any_tag;
  std::vector<std::byte> body;
};

struct spawn_request {
  int count = 1;
  int host_id = -1;               // of its host record; -1 wherever the transport likes
  const char* argument = "";      // the first argument of the processes
  std::string parent;             // the second one, where the transport has none of its own
  bool keep_errors = false;       // what they write to the standard error is to be shown
  void (*meanwhile)() = nullptr;  // called again and again where that takes long
};

class transport {
 public:
  transport() = default;
  transport(const transport&) = delete;
  transport& operator=(const transport&) = delete;
  virtual ~transport() = default;

  /// Joins the others; with `as_task` this process was started by one of them. False: `fault` says
  /// why.
  virtual bool enter(bool as_task) = 0;
  /// Why something didn't work, in words.
  virtual std::string fault() const = 0;
  /// The machine of this process first.
  virtual std::vector<host_record> hosts() = 0;
  /// Starts copies of the program. Those that couldn't be started are missing at the end.
  virtual std::vector<task_id> spawn(const spawn_request& request) = 0;
  /// Task `index` of the tasks that were spawned with this one, whose ids the parent told.
  virtual task_id sibling(int index, std::span<const std::int32_t> ids) = 0;
  /// False: nobody is there any more. May wait until there is room, and takes in what comes.
  virtual bool send(task_id to, int tag, std::span<const std::byte> body) = 0;
  /// The oldest message of that sender and tag; none: nothing has come. Never waits.
  virtual std::optional<arrived_message> receive(task_id from, int tag) = 0;
  virtual bool is_alive(task_id task) = 0;
  /// For transports that wait until a message is taken: may that take longer than these seconds?
  virtual void wait_by(bool (*may_wait)(task_id task, double seconds)) = 0;
  virtual void kill(task_id task) = 0;
  /// Nothing will be sent to or expected from these tasks any more.
  virtual void forget(std::span<const task_id> tasks) = 0;
  /// The process ends, or leaves the others.
  virtual void leave() = 0;
};

}  // namespace zeb
