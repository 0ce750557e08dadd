// Tasks over MPI. A module of its own, loaded when it is needed, so that the program starts without
// the library. It calls nothing of the program.
#include <mpi.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <list>
#include <string>
#include <vector>

#include "parallel/modules/daemon_watch.h"
#include "parallel/modules/joining.h"
#include "parallel/modules/mpi_environment.h"
#include "parallel/transport/transport.h"

namespace zeb {
namespace {

constexpr int ranks_per_job = 1024;  // above the most tasks of a job

/// Who writes to a process that has died is told so, and not ended by the signal of closed pipes,
/// which stays as it is for the outputs of the program. Threads that begin meanwhile never get it.
class closed_pipe_scope {
 public:
  closed_pipe_scope() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_, &former_);
  }
  ~closed_pipe_scope() {
    const timespec at_once{};
    while (sigismember(&former_, SIGPIPE) == 0 && sigtimedwait(&pipe_, nullptr, &at_once) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &former_, nullptr);
  }
  closed_pipe_scope(const closed_pipe_scope&) = delete;
  closed_pipe_scope& operator=(const closed_pipe_scope&) = delete;

 private:
  sigset_t pipe_ = {};
  sigset_t former_ = {};
};

std::string absolute_path(const char* file) {
  std::array<char, PATH_MAX> path{};
  return realpath(file, path.data()) ? path.data() : file;
}

class mpi_transport : public transport {
 public:
  bool enter(bool as_task) override;
  std::string fault() const override { return fault_; }
  std::vector<host_record> hosts() override;
  std::vector<task_id> spawn(const spawn_request& request) override;
  task_id sibling(int index, std::span<const std::int32_t>) override { return index; }
  bool send(task_id to, int tag, std::span<const std::byte> body) override;
  std::optional<arrived_message> receive(task_id from, int tag) override;
  bool is_alive(task_id task) override;
  void kill(task_id) override {}  // by the number of its process, which the parent knows
  void forget(std::span<const task_id> tasks) override;
  void leave() override {}
  void wait_by(bool (*may_wait)(task_id, double)) override { may_wait_ = may_wait; }

 private:
  /// A communicator and the rank in it.
  struct address {
    MPI_Comm channel = MPI_COMM_NULL;
    int rank = 0;
  };
  /// What was sent and may not have gone out.
  struct pending_send {
    MPI_Request request = MPI_REQUEST_NULL;
    std::vector<std::byte> body;
  };
  address address_of(task_id task) const;
  void settle_sends();
  std::optional<arrived_message> receive_on(MPI_Comm channel, task_id first, int rank, int tag);

  bool started_ = false;
  MPI_Comm parent_ = MPI_COMM_NULL;
  std::vector<MPI_Comm> jobs_;  // MPI_COMM_NULL: forgotten
  std::list<pending_send> on_their_way_;
  std::string host_file_;  // empty: there is none
  std::vector<host_record> hosts_;
  bool own_is_listed_ = false;  // in the host file: else no task can be tied to this machine
  std::string fault_;
  bool (*may_wait_)(task_id, double) = nullptr;
};

bool mpi_transport::enter(bool as_task) {
  const closed_pipe_scope pipes;
  const char* const file = std::getenv("ZEB_HOSTFILE");
  host_file_ = file && access(file, R_OK) == 0 ? absolute_path(file) : "";
  prepare_mpi_environment(as_task, host_file_);
  if (!started_) {
    int provided = 0;
    if (!as_task) begin_daemon_watch();
    if (MPI_Init_thread(nullptr, nullptr, MPI_THREAD_MULTIPLE, &provided) != MPI_SUCCESS) {
      fault_ = "MPI can't be initialised";
      return false;
    }
    if (!as_task) tell_daemon_watch();
    started_ = true;
    MPI_Comm_set_errhandler(MPI_COMM_WORLD, MPI_ERRORS_RETURN);
    MPI_Comm_set_errhandler(MPI_COMM_SELF, MPI_ERRORS_RETURN);
  }
  if (!as_task) return true;
  MPI_Comm_get_parent(&parent_);
  if (parent_ == MPI_COMM_NULL) {
    fault_ = "there is no parent";
    return false;
  }
  MPI_Comm_set_errhandler(parent_, MPI_ERRORS_RETURN);
  tell_joined(parent_);
  return true;
}

/// The first word of each line of the host file.
std::vector<host_record> mpi_transport::hosts() {
  std::array<char, MPI_MAX_PROCESSOR_NAME> name{};
  int length = 0;
  MPI_Get_processor_name(name.data(), &length);
  hosts_ = {{0, name.data(), "LINUX", 1000}};
  std::ifstream lines(host_file_);
  std::string line;
  while (!host_file_.empty() && std::getline(lines, line)) {
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == line.npos || line[first] == '#') continue;
    const std::string host = line.substr(first, line.find_first_of(" \t\r", first) - first);
    const bool is_own = host == hosts_[0].name || host == "localhost";
    own_is_listed_ = own_is_listed_ || is_own;
    const bool known = std::any_of(hosts_.begin(), hosts_.end(),
                                   [&host](const host_record& h) { return h.name == host; });
    if (!known && !is_own) hosts_.push_back({static_cast<int>(hosts_.size()), host, "LINUX", 1000});
  }
  return hosts_;
}

std::vector<task_id> mpi_transport::spawn(const spawn_request& request) {
  const closed_pipe_scope pipes;
  MPI_Info info = MPI_INFO_NULL;
  MPI_Info_create(&info);
  if (!host_file_.empty() && request.host_id != 0) MPI_Info_set(info, "map_by", "node");
  if (request.host_id > 0 || (request.host_id == 0 && own_is_listed_)) {
    const std::string& name = hosts_[static_cast<std::size_t>(request.host_id)].name;
    MPI_Info_set(info, "host", name.c_str());
    if (request.host_id > 0) MPI_Info_set(info, "add-host", name.c_str());  // not in use yet
  }
  const MPI_Comm channel = spawn_and_join(request, info, &fault_);
  if (channel == MPI_COMM_NULL) return {};
  jobs_.push_back(channel);
  int started = 0;
  MPI_Comm_remote_size(channel, &started);
  std::vector<task_id> tasks;
  for (int rank = 0; rank < started; ++rank)
    tasks.push_back(static_cast<int>(jobs_.size()) * ranks_per_job + rank);
  return tasks;
}

/// Numbers below those of the first job are siblings.
mpi_transport::address mpi_transport::address_of(task_id task) const {
  if (task == parent_task) return {parent_, 0};
  if (task < 0) return {};
  if (task < ranks_per_job) return {MPI_COMM_WORLD, task};
  const std::size_t job = static_cast<std::size_t>(task / ranks_per_job) - 1;
  return job < jobs_.size() ? address{jobs_[job], task % ranks_per_job} : address{};
}

/// Takes what has gone out from the list.
void mpi_transport::settle_sends() {
  std::erase_if(on_their_way_, [](pending_send& sent) {
    int done = 0;
    return MPI_Test(&sent.request, &done, MPI_STATUS_IGNORE) != MPI_SUCCESS || done;
  });
}

/// A task looks again and again whether it has gone out, since the library waits for ever for the
/// dead. A gateway doesn't wait.
bool mpi_transport::send(task_id to, int tag, std::span<const std::byte> body) {
  const closed_pipe_scope pipes;
  constexpr int looks_between_tests = 500;
  constexpr useconds_t between_looks = 1'000;  // microseconds
  const address where = address_of(to);
  if (where.channel == MPI_COMM_NULL || body.size() > INT_MAX) return false;
  settle_sends();
  pending_send& sent = on_their_way_.emplace_back();
  sent.body.assign(body.begin(), body.end());
  if (MPI_Isend(sent.body.data(), static_cast<int>(sent.body.size()), MPI_BYTE, where.rank, tag,
                where.channel, &sent.request) != MPI_SUCCESS) {
    on_their_way_.pop_back();
    return false;
  }
  for (int look = 1; may_wait_; ++look) {
    int done = 0;
    if (MPI_Test(&sent.request, &done, MPI_STATUS_IGNORE) != MPI_SUCCESS) return false;
    if (done) return true;
    if (look % looks_between_tests == 0 && !may_wait_(to, 1e-6 * look * between_looks))
      return false;
    usleep(between_looks);
  }
  return true;
}

std::optional<arrived_message> mpi_transport::receive_on(MPI_Comm channel, task_id first, int rank,
                                                         int tag) {
  if (channel == MPI_COMM_NULL) return std::nullopt;
  int there = 0;
  MPI_Status status;
  if (MPI_Iprobe(rank < 0 ? MPI_ANY_SOURCE : rank, tag == any_tag ? MPI_ANY_TAG : tag, channel,
                 &there, &status) != MPI_SUCCESS ||
      !there)
    return std::nullopt;
  int length = 0;
  MPI_Get_count(&status, MPI_BYTE, &length);
  arrived_message message{first + status.MPI_SOURCE, status.MPI_TAG, {}};
  if (first == parent_task) message.from = parent_task;
  message.body.resize(static_cast<std::size_t>(std::max(length, 0)));
  if (MPI_Recv(message.body.data(), length, MPI_BYTE, status.MPI_SOURCE, status.MPI_TAG, channel,
               MPI_STATUS_IGNORE) != MPI_SUCCESS)
    return std::nullopt;
  return message;
}

std::optional<arrived_message> mpi_transport::receive(task_id from, int tag) {
  const closed_pipe_scope pipes;
  settle_sends();
  if (from != any_task) {
    const address where = address_of(from);
    const task_id first = from == parent_task ? parent_task : from - where.rank;
    return receive_on(where.channel, first, where.rank, tag);
  }
  if (auto message = receive_on(parent_, parent_task, -1, tag)) return message;
  for (std::size_t i = 0; i < jobs_.size(); ++i) {
    const task_id first = static_cast<int>(i + 1) * ranks_per_job;
    if (auto message = receive_on(jobs_[i], first, -1, tag)) return message;
  }
  return receive_on(MPI_COMM_WORLD, 0, -1, tag);
}

bool mpi_transport::is_alive(task_id task) { return address_of(task).channel != MPI_COMM_NULL; }

/// The channel stays open: to close it would wait for the dead.
void mpi_transport::forget(std::span<const task_id> tasks) {
  for (const task_id task : tasks) {
    const std::size_t job = static_cast<std::size_t>(task / ranks_per_job) - 1;
    if (task >= ranks_per_job && job < jobs_.size()) jobs_[job] = MPI_COMM_NULL;
  }
}

}  // namespace
}  // namespace zeb

// What a module defines: a transport, for good.
extern "C" zeb::transport* zeb_make_transport();
extern "C" zeb::transport* zeb_make_transport() { return new zeb::mpi_transport(); }
