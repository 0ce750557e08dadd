#include "parallel/transport/local_transport.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <deque>
#include <functional>
#include <map>

#include "base/message_text.h"

namespace zeb {
namespace {

struct message_head {
  std::int32_t tag = 0;
  std::int32_t unused = 0;
  std::uint64_t length = 0;
};
constexpr std::uint64_t longest_message = std::uint64_t{1} << 40;
constexpr task_id sibling_base = 1'000'000;  // siblings are numbered from here

/// One end of a socket pair, with what has come and wasn't asked for yet.
class link {
 public:
  link(int descriptor, pid_t process) : descriptor_(descriptor), process_(process) {}
  link(const link&) = delete;
  link& operator=(const link&) = delete;
  ~link() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  int descriptor() const { return descriptor_; }
  pid_t process() const { return process_; }
  bool is_open() const { return descriptor_ >= 0; }
  void take_in();
  /// `may_wait` is asked once a second, while the other end takes nothing.
  bool put_out(std::span<const std::byte> bytes, const std::function<bool(double)>& may_wait);
  std::optional<arrived_message> next(task_id from, int tag);

 private:
  void shut() {
    close(descriptor_);
    descriptor_ = -1;
  }
  void split();

  int descriptor_;
  pid_t process_;
  std::vector<std::byte> bytes_;  // of a message that hasn't come whole
  std::deque<arrived_message> inbox_;
};

void link::take_in() {
  constexpr std::size_t piece = 1 << 16;
  while (is_open()) {
    const std::size_t end = bytes_.size();
    bytes_.resize(end + piece);
    const ssize_t count = recv(descriptor_, bytes_.data() + end, piece, MSG_DONTWAIT);
    bytes_.resize(end + static_cast<std::size_t>(count > 0 ? count : 0));
    if (count > 0) continue;
    if (count < 0 && errno == EINTR) continue;
    if (count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) shut();
    break;
  }
  split();
}

void link::split() {
  std::size_t at = 0;
  message_head head;
  while (bytes_.size() - at >= sizeof head) {
    std::memcpy(&head, bytes_.data() + at, sizeof head);
    if (head.length > longest_message) {
      if (is_open()) shut();
      break;
    }
    const std::size_t length = head.length;
    if (bytes_.size() - at - sizeof head < length) break;
    const auto body = bytes_.begin() + static_cast<std::ptrdiff_t>(at + sizeof head);
    inbox_.push_back({any_task, head.tag, {body, body + static_cast<std::ptrdiff_t>(length)}});
    at += sizeof head + length;
  }
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(at));
}

bool link::put_out(std::span<const std::byte> bytes, const std::function<bool(double)>& may_wait) {
  double waited = 0;  // seconds
  while (!bytes.empty() && is_open()) {
    const ssize_t count =
        ::send(descriptor_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count > 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
      waited = 0;
      continue;
    }
    if (errno == EINTR) continue;
    if (errno != EAGAIN && errno != EWOULDBLOCK) {
      shut();
      break;
    }
    // The other end may be waiting for room in the same way: what it sends is taken.
    pollfd waiting{descriptor_, POLLIN | POLLOUT, 0};
    constexpr int milliseconds = 1000;
    const int ready = poll(&waiting, 1, milliseconds);
    if ((waiting.revents & POLLIN) != 0) take_in();
    if (ready == 0 && !may_wait(++waited) && is_open()) shut();
  }
  return bytes.empty();
}

std::optional<arrived_message> link::next(task_id from, int tag) {
  for (auto message = inbox_.begin(); message != inbox_.end(); ++message) {
    if (tag != any_tag && message->tag != tag) continue;
    std::optional<arrived_message> found = std::move(*message);
    found->from = from;
    inbox_.erase(message);
    return found;
  }
  return std::nullopt;
}

using socket_pair = std::array<int, 2>;  // here, there

bool make_pair(socket_pair& pair) {
  return socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) == 0;
}

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
  link* find(task_id task) {
    const auto found = links_.find(task);
    return found == links_.end() ? nullptr : found->second.get();
  }

  std::map<task_id, std::unique_ptr<link>> links_;
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
      links_.emplace(task, std::make_unique<link>(descriptor, getppid()));
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
  link* const way = find(to);
  if (!way) return false;
  const message_head head{tag, 0, body.size()};
  const auto may_wait = [this, to](double seconds) { return !may_wait_ || may_wait_(to, seconds); };
  return way->put_out(std::as_bytes(std::span(&head, 1)), may_wait) && way->put_out(body, may_wait);
}

std::optional<arrived_message> local_transport::receive(task_id from, int tag) {
  for (auto& [task, way] : links_) {
    if (from != any_task && task != from) continue;
    way->take_in();
    if (std::optional<arrived_message> message = way->next(task, tag)) return message;
  }
  return std::nullopt;
}

bool local_transport::is_alive(task_id task) {
  link* const way = find(task);
  if (!way) return false;
  way->take_in();
  return way->is_open();
}

void local_transport::kill(task_id task) {
  link* const way = find(task);
  if (way && task >= 0 && task < sibling_base) ::kill(way->process(), SIGKILL);
}

void local_transport::forget(std::span<const task_id> tasks) {
  for (const task_id task : tasks) {
    const auto found = links_.find(task);
    if (found == links_.end()) continue;
    const pid_t process = found->second->process();
    links_.erase(found);  // a task that waits for nobody ends
    constexpr int rounds = 200;
    constexpr int milliseconds = 10;
    for (int i = 0; i < rounds && waitpid(process, nullptr, WNOHANG) == 0; ++i)
      poll(nullptr, 0, milliseconds);
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
    links_.emplace(next_task_, std::make_unique<link>(to_parent[i][0], child));
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
