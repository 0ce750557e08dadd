#include "parallel/transport/gateway_transport.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <list>
#include <utility>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/packet.h"
#include "parallel/transport/gateway.h"
#include "parallel/transport/socket_link.h"

namespace zeb {
namespace {

constexpr int ranks_per_job = 1024;  // above the most tasks of a job

[[noreturn]] void become_gateway(int descriptor, const char* number, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(1);
  setsid();  // keys of the console are for the process alone
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(nothing, STDIN_FILENO);
  dup2(nothing, STDOUT_FILENO);
  fcntl(descriptor, F_SETFD, 0);
  std::array<char*, 4> arguments = {const_cast<char*>("zeb"), const_cast<char*>(gateway_argument),
                                    const_cast<char*>(number), nullptr};
  execv("/proc/self/exe", arguments.data());
  _exit(1);
}

/// What a gateway did, as it tells it.
arrived_message await_word(socket_link& link, int word) {
  constexpr int between_looks = 5;  // milliseconds
  for (;;) {
    link.take_in();
    if (auto message = link.next(any_task, word)) return *std::move(message);
    if (!link.is_open()) throw damaged_message();
    check_interrupt();
    pollfd waiting{link.descriptor(), POLLIN, 0};
    poll(&waiting, 1, between_looks);
  }
}

/// This side of a gateway, which ends with it.
struct gateway {
  gateway(int descriptor, pid_t process) : link(descriptor, process) {}
  gateway(const gateway&) = delete;
  gateway& operator=(const gateway&) = delete;
  ~gateway() {
    kill(link.process(), SIGKILL);
    waitpid(link.process(), nullptr, 0);
  }

  socket_link link;
  std::vector<host_record> hosts;
  int jobs = 0;         // whose tasks can still be reached
  bool spoilt = false;  // can't be relied on to join tasks any more
};

std::vector<host_record> hosts_taken_from(packet_reader& told) {
  std::vector<host_record> hosts;
  for (int left = told.whole(); left > 0; --left) {
    host_record& host = hosts.emplace_back();
    host.id = told.whole();
    host.name = told.text();
    host.architecture = told.text();
    host.speed = told.whole();
  }
  return hosts;
}

struct job_way {
  gateway* through = nullptr;  // null: nothing is expected any more
  task_id first = 0;           // the number of its first task, there
};

class gateway_transport : public transport {
 public:
  explicit gateway_transport(std::unique_ptr<transport> above) : above_(std::move(above)) {}

  bool enter(bool as_task) override {
    return as_task ? above_ && above_->enter(true) : usable_gateway() != nullptr;
  }
  std::string fault() const override { return fault_; }
  std::vector<host_record> hosts() override {
    return above_ ? above_->hosts() : gateways_.back().hosts;
  }
  std::vector<task_id> spawn(const spawn_request& request) override;
  task_id sibling(int index, std::span<const std::int32_t> ids) override {
    return above_ ? above_->sibling(index, ids) : any_task;
  }
  bool send(task_id to, int tag, std::span<const std::byte> body) override;
  std::optional<arrived_message> receive(task_id from, int tag) override;
  bool is_alive(task_id task) override;
  void kill(task_id task) override;
  void forget(std::span<const task_id> tasks) override;
  void leave() override;
  void wait_by(bool (*may_wait)(task_id, double)) override {
    if (above_) above_->wait_by(may_wait);
  }

 private:
  gateway* start_gateway();
  gateway* usable_gateway();
  /// By the last gateway.
  std::vector<task_id> spawn_once(const spawn_request& request);
  job_way* way_to(task_id task);
  bool is_above(task_id task) const { return above_ && task < ranks_per_job; }

  std::unique_ptr<transport> above_;
  std::list<gateway> gateways_;  // new tasks are spawned by the last one
  std::vector<job_way> jobs_;
  std::string fault_;
};

/// Null: the system refuses one.
gateway* gateway_transport::start_gateway() {
  socket_pair pair{-1, -1};
  const bool paired = make_pair(pair);
  const std::string number = std::to_string(pair[1]);
  const pid_t here = getpid();
  const pid_t child = paired ? fork() : -1;
  if (child == 0) become_gateway(pair[1], number.c_str(), here);
  if (pair[1] >= 0) close(pair[1]);
  if (child >= 0) return &gateways_.emplace_back(pair[0], child);
  if (pair[0] >= 0) close(pair[0]);
  return nullptr;
}

/// Started at the first need, and anew after one was spoilt. Null: `fault` says why.
gateway* gateway_transport::usable_gateway() {
  if (!gateways_.empty() && !gateways_.back().spoilt && gateways_.back().link.is_open())
    return &gateways_.back();
  gateways_.remove_if([](const gateway& g) { return g.jobs == 0; });
  gateway* const started = start_gateway();
  if (!started) {
    fault_ = "no more processes can be started";
    return nullptr;
  }
  started->spoilt = true;  // where the waiting is broken off
  try {
    const arrived_message ready = await_word(started->link, gateway_ready);
    packet_reader told(ready.body);
    started->spoilt = told.whole() == 0;
    fault_ = told.text();
    started->hosts = hosts_taken_from(told);
  } catch (const damaged_message&) {
    fault_ = "MPI ended the process that was to start it";
  }
  if (!started->spoilt) return started;
  gateways_.pop_back();
  return nullptr;
}

std::vector<task_id> gateway_transport::spawn_once(const spawn_request& request) {
  gateway* const by = &gateways_.back();
  packet_writer wanted;
  wanted.put(request.count);
  wanted.put(request.host_id);
  wanted.put_text(request.argument);
  wanted.put_text(request.parent);
  std::vector<task_id> tasks;
  by->spoilt = true;  // where the waiting is broken off
  try {
    by->link.send(any_task, gateway_spawn, wanted.bytes(), [](double) { return true; });
    const arrived_message spawned = await_word(by->link, gateway_spawned);
    packet_reader told(spawned.body);
    tasks = told.list();
    fault_ = told.text();
  } catch (const damaged_message&) {
    fault_ = "MPI ended the process that spawns tasks";
  }
  if (tasks.empty()) return {};
  by->spoilt = false;
  by->jobs += 1;
  jobs_.push_back({by, tasks.front()});
  for (std::size_t rank = 0; rank < tasks.size(); ++rank)
    tasks[rank] = static_cast<int>(jobs_.size()) * ranks_per_job + static_cast<int>(rank);
  return tasks;
}

/// Once more with new tasks by a new gateway, since one that dies while it joins holds up the
/// others.
std::vector<task_id> gateway_transport::spawn(const spawn_request& request) {
  constexpr int trials = 3;
  std::vector<task_id> tasks;
  for (int trial = 0; trial < trials && tasks.empty() && usable_gateway(); ++trial)
    tasks = spawn_once(request);
  return tasks;
}

/// Null: nobody can be reached there.
job_way* gateway_transport::way_to(task_id task) {
  const int job = task / ranks_per_job - 1;
  if (task < ranks_per_job || job >= static_cast<int>(jobs_.size())) return nullptr;
  job_way& way = jobs_[at(job)];
  return way.through && way.through->link.is_open() ? &way : nullptr;
}

bool gateway_transport::send(task_id to, int tag, std::span<const std::byte> body) {
  if (is_above(to)) return above_->send(to, tag, body);
  job_way* const way = way_to(to);
  return way && body.size() <= INT_MAX &&  // which is the most that MPI takes
         way->through->link.send(way->first + to % ranks_per_job, tag, body,
                                 [](double) { return true; });
}

std::optional<arrived_message> gateway_transport::receive(task_id from, int tag) {
  if (is_above(from)) return above_->receive(from, tag);
  job_way* const way = way_to(from);
  if (!way) return std::nullopt;
  way->through->link.take_in();
  std::optional<arrived_message> message =
      way->through->link.next(way->first + from % ranks_per_job, tag);
  if (message) message->from = from;
  return message;
}

bool gateway_transport::is_alive(task_id task) {
  if (is_above(task)) return above_->is_alive(task);
  job_way* const way = way_to(task);
  if (way) way->through->link.take_in();
  return way && way->through->link.is_open();
}

/// That is done by the number of its process, which the parent knows.
void gateway_transport::kill(task_id task) {
  if (job_way* const way = way_to(task)) way->through->spoilt = true;
}

/// The library may wait half a minute for tasks that have ended when it spawns new ones.
void gateway_transport::forget(std::span<const task_id> tasks) {
  for (const task_id task : tasks) {
    job_way* const way = way_to(task);
    if (!way) continue;
    packet_writer there;
    there.put_list({{way->first}});
    way->through->link.send(any_task, gateway_forget, there.bytes(), [](double) { return true; });
    way->through->jobs -= 1;
    way->through->spoilt = true;
    way->through = nullptr;
  }
}

void gateway_transport::leave() {
  if (above_) above_->leave();
  jobs_.clear();
  gateways_.clear();
}

}  // namespace

std::unique_ptr<transport> make_gateway_transport(std::unique_ptr<transport> above) {
  return std::make_unique<gateway_transport>(std::move(above));
}

}  // namespace zeb
