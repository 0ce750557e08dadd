#include "parallel/transport/local_transport.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <map>

#include "parallel/transport/socket_link.h"

namespace zeb {
namespace {

constexpr task_id sibling_base = 1'000'000;  // siblings are numbered from here

void allow_many_descriptors() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

[[noreturn]] void become_task(const spawn_request& request, const std::string& descriptors,
                              pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // no task outlives who waits for it
  if (getppid() != parent) _exit(255);
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(nothing, STDIN_FILENO);
  dup2(nothing, STDOUT_FILENO);
  if (!request.keep_errors) dup2(nothing, STDERR_FILENO);
  for (std::size_t i = 0; i < descriptors.size();) {
    const std::size_t end = std::min(descriptors.find(' ', i), descriptors.size());
    const int descriptor = std::atoi(descriptors.substr(i, end - i).c_str());
    if (descriptor > 2) fcntl(descriptor, F_SETFD, 0);
    i = end + 1;
  }
  std::array<char*, 4> arguments = {const_cast<char*>("zeb"), const_cast<char*>(request.argument),
                                    const_cast<char*>(descriptors.c_str()), nullptr};
  execv("/proc/self/exe", arguments.data());
  _exit(255);
}

class local_transport : public transport {
 public:
  explicit local_transport(const std::string& descriptors);

  bool enter(bool as_task) override {
    if (as_task && !links_.contains(parent_task)) fault_ = "there is no parent";
    return !as_task || links_.contains(parent_task);
  }
  std::string fault() const override { return fault_; }
  std::vector<host_record> hosts() override;
  std::vector<task_id> spawn(const spawn_request& request) override;
  task_id sibling(int index, std::span<const std::int32_t>) override {
    return sibling_base + index;
  }
  bool send(task_id to, int tag, std::span<const std::byte> body) override;
  std::optional<arrived_message> receive(task_id from, int tag) override;
  bool is_alive(task_id task) override;
  void kill(task_id task) override;
  void forget(std::span<const task_id> tasks) override;
  void leave() override {}
  void wait_by(bool (*may_wait)(task_id, double)) override { may_wait_ = may_wait; }

 private:
  socket_link* find(task_id task) {
    const auto found = links_.find(task);
    return found == links_.end() ? nullptr : found->second.get();
  }

  std::map<task_id, std::unique_ptr<socket_link>> links_;
  task_id next_task_ = 1;
  std::string fault_;
  bool (*may_wait_)(task_id, double) = nullptr;
};

// "12 5 6": the socket to the parent, and those to siblings in order; -1 where there is none.
local_transport::local_transport(const std::string& descriptors) {
  task_id task = parent_task;
  for (std::size_t i = 0; i < descriptors.size();) {
    const std::size_t end = std::min(descriptors.find(' ', i), descriptors.size());
    const int descriptor = std::atoi(descriptors.substr(i, end - i).c_str());
    if (descriptor > 2 && fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0)
      links_.emplace(task, std::make_unique<socket_link>(descriptor, getppid()));
    task = task == parent_task ? sibling_base : task + 1;
    i = end + 1;
  }
}

std::vector<host_record> local_transport::hosts() {
  std::array<char, 256> name{};
  gethostname(name.data(), name.size() - 1);
  return {{.id = 0, .name = name.data(), .architecture = "LINUX", .speed = 1000}};
}

bool local_transport::send(task_id to, int tag, std::span<const std::byte> body) {
  socket_link* const way = find(to);
  if (!way) return false;
  const auto may_wait = [this, to](double seconds) { return !may_wait_ || may_wait_(to, seconds); };
  return way->send(to, tag, body, may_wait);
}

std::optional<arrived_message> local_transport::receive(task_id from, int tag) {
  for (auto& [task, way] : links_) {
    if (from != any_task && task != from) continue;
    way->take_in();
    std::optional<arrived_message> message = way->next(any_task, tag);
    if (!message) continue;
    message->from = task;
    return message;
  }
  return std::nullopt;
}

bool local_transport::is_alive(task_id task) {
  socket_link* const way = find(task);
  if (!way) return false;
  way->take_in();
  return way->is_open();
}

void local_transport::kill(task_id task) {
  socket_link* const way = find(task);
  if (way && task >= 0 && task < sibling_base) ::kill(way->process(), SIGKILL);
}

void local_transport::forget(std::span<const task_id> tasks) {
  std::vector<pid_t> processes;
  for (const task_id task : tasks) {
    const auto found = links_.find(task);
    if (found == links_.end()) continue;
    processes.push_back(found->second->process());
    links_.erase(found);  // a task that waits for nobody ends
  }
  const auto has_ended = [](pid_t process) { return waitpid(process, nullptr, WNOHANG) != 0; };
  constexpr int rounds = 200;
  constexpr int milliseconds = 10;
  for (int i = 0; i < rounds; ++i) {
    std::erase_if(processes, has_ended);
    if (processes.empty()) return;
    poll(nullptr, 0, milliseconds);
  }
  for (const pid_t process : processes) {
    ::kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
  }
}

std::vector<task_id> local_transport::spawn(const spawn_request& request) {
  allow_many_descriptors();
  const auto count = static_cast<std::size_t>(request.count);
  std::vector<socket_pair> to_parent(count, {-1, -1});
  std::vector<socket_pair> to_first(count, {-1, -1});
  bool made = true;
  for (std::size_t i = 0; made && i < count; ++i)
    made = make_pair(to_parent[i]) && (i == 0 || make_pair(to_first[i]));
  std::vector<task_id> started;
  for (std::size_t i = 0; made && i < count; ++i) {
    std::string descriptors = std::to_string(to_parent[i][1]);
    if (i > 0) {
      descriptors += " " + std::to_string(to_first[i][1]);
    } else {
      for (const socket_pair& pair : to_first) descriptors += " " + std::to_string(pair[0]);
    }
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) become_task(request, descriptors, parent);
    if (child < 0) break;
    links_.emplace(next_task_, std::make_unique<socket_link>(to_parent[i][0], child));
    to_parent[i][0] = -1;
    started.push_back(next_task_++);
  }
  if (started.size() < count) fault_ = std::strerror(errno);  // NOLINT(concurrency-mt-unsafe)
  for (std::size_t i = 0; i < count; ++i) {
    for (const int descriptor : {to_parent[i][0], to_parent[i][1], to_first[i][0], to_first[i][1]})
      if (descriptor >= 0) close(descriptor);
  }
  return started;
}

}  // namespace

std::unique_ptr<transport> make_local_transport(const std::string& descriptors) {
  return std::make_unique<local_transport>(descriptors);
}

}  // namespace zeb
