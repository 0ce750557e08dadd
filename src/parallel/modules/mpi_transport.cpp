// Tasks over MPI. A module of its own, loaded when it is needed, so that the program starts without
// the library. It calls nothing of the program.
#include <mpi.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "parallel/modules/daemon_watch.h"
#include "parallel/transport/transport.h"

namespace zeb {
namespace {

constexpr int ranks_per_job = 1024;          // above the most tasks of a job
constexpr useconds_t between_looks = 1'000;  // microseconds

/// Within which tasks that were started are to join the others.
int seconds_to_join() {
  constexpr int usual = 60;
  const char* const told = std::getenv("ZEB_JOIN_SECONDS");
  return std::max(told ? std::atoi(told) : usual, 1);
}

/// Set before the library starts, unless the user has: more tasks than processors are wanted, a
/// task that dies mustn't take the others along, and nobody is to wait for ever for one that dies
/// while it joins.
void prepare_environment() {
  const auto suggest = [](const char* name, const char* value) { setenv(name, value, 0); };
  suggest("OMPI_MCA_pmix_base_exchange_timeout", std::to_string(seconds_to_join()).c_str());
  suggest("OMPI_MCA_rmaps_base_oversubscribe", "1");
  suggest("OMPI_MCA_orte_enable_recovery", "1");
  suggest("OMPI_MCA_orte_abort_on_non_zero_status", "0");
  suggest("OMPI_MCA_mpi_yield_when_idle", "1");
  const bool has_shell = access("/usr/bin/ssh", X_OK) == 0 || access("/usr/bin/rsh", X_OK) == 0;
  if (!has_shell) suggest("OMPI_MCA_plm", "isolated");
  if (getuid() == 0) {
    suggest("OMPI_ALLOW_RUN_AS_ROOT", "1");
    suggest("OMPI_ALLOW_RUN_AS_ROOT_CONFIRM", "1");
  }
}

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

std::string path_of_program() {
  std::array<char, PATH_MAX> path{};
  const ssize_t length = readlink("/proc/self/exe", path.data(), path.size() - 1);
  return {path.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

struct spawn_outcome {
  int code = MPI_SUCCESS;
  MPI_Comm channel = MPI_COMM_NULL;
};

spawn_outcome join_tasks(std::string argument, std::string parent, int count, MPI_Info info) {
  std::array<char*, 3> arguments = {argument.data(), parent.data(), nullptr};
  std::vector<int> codes(static_cast<std::size_t>(count), MPI_SUCCESS);
  spawn_outcome outcome;
  outcome.code = MPI_Comm_spawn(path_of_program().c_str(), arguments.data(), count, info, 0,
                                MPI_COMM_SELF, &outcome.channel, codes.data());
  return outcome;
}

/// The library's limit doesn't help where a task dies at the end of its joining: that is waited for
/// without end, by a thread that is left to it. Nothing: they didn't join.
std::optional<spawn_outcome> join_in_time(const spawn_request& request, MPI_Info info) {
  const closed_pipe_scope pipes;
  const std::chrono::seconds longest(seconds_to_join() * 3 / 2 + request.count);
  std::promise<spawn_outcome> promise;
  std::future<spawn_outcome> outcome = promise.get_future();
  std::thread([promise = std::move(promise), argument = std::string(request.argument),
               parent = request.parent, count = request.count, info]() mutable {
    promise.set_value(join_tasks(argument, parent, count, info));
  }).detach();
  if (outcome.wait_for(longest) != std::future_status::ready) return std::nullopt;
  return outcome.get();
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
  address address_of(task_id task) const;
  std::optional<arrived_message> receive_on(MPI_Comm channel, task_id first, int rank, int tag);

  bool started_ = false;
  MPI_Comm parent_ = MPI_COMM_NULL;
  std::vector<MPI_Comm> jobs_;  // MPI_COMM_NULL: forgotten
  std::string host_file_;       // empty: there is none
  std::string fault_;
  bool (*may_wait_)(task_id, double) = nullptr;
};

bool mpi_transport::enter(bool as_task) {
  const closed_pipe_scope pipes;
  prepare_environment();
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
  const char* const file = std::getenv("ZEB_HOSTFILE");
  host_file_ = file && access(file, R_OK) == 0 ? file : "";
  if (!as_task) return true;
  MPI_Comm_get_parent(&parent_);
  if (parent_ == MPI_COMM_NULL) {
    fault_ = "there is no parent";
    return false;
  }
  MPI_Comm_set_errhandler(parent_, MPI_ERRORS_RETURN);
  return true;
}

/// The first word of each line of the host file.
std::vector<host_record> mpi_transport::hosts() {
  std::array<char, MPI_MAX_PROCESSOR_NAME> name{};
  int length = 0;
  MPI_Get_processor_name(name.data(), &length);
  std::vector<host_record> hosts = {{0, name.data(), "LINUX", 1000}};
  std::ifstream lines(host_file_);
  std::string line;
  while (!host_file_.empty() && std::getline(lines, line)) {
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == line.npos || line[first] == '#') continue;
    const std::string host = line.substr(first, line.find_first_of(" \t\r", first) - first);
    const bool known = std::any_of(hosts.begin(), hosts.end(),
                                   [&host](const host_record& h) { return h.name == host; });
    if (!known && host != "localhost")
      hosts.push_back({static_cast<int>(hosts.size()), host, "LINUX", 1000});
  }
  return hosts;
}

std::vector<task_id> mpi_transport::spawn(const spawn_request& request) {
  MPI_Info info = MPI_INFO_NULL;
  MPI_Info_create(&info);
  if (!host_file_.empty() && request.host_id != 0) {
    MPI_Info_set(info, "add-hostfile", host_file_.c_str());
    MPI_Info_set(info, "map_by", "node");
  }
  std::optional<spawn_outcome> outcome = join_in_time(request, info);
  // Once more with new tasks, since one that died while it joined held up the others.
  if (!outcome || outcome->code != MPI_SUCCESS) outcome = join_in_time(request, info);
  if (!outcome) {
    fault_ = "the tasks didn't join in time";
    return {};
  }
  MPI_Info_free(&info);
  if (outcome->code != MPI_SUCCESS || outcome->channel == MPI_COMM_NULL) {
    std::array<char, MPI_MAX_ERROR_STRING> text{};
    int length = 0;
    MPI_Error_string(outcome->code, text.data(), &length);
    fault_ = text.data();
    return {};
  }
  MPI_Comm_set_errhandler(outcome->channel, MPI_ERRORS_RETURN);
  jobs_.push_back(outcome->channel);
  int started = 0;
  MPI_Comm_remote_size(outcome->channel, &started);
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

/// Looks again and again whether it has gone out, since the library waits for ever for the dead.
bool mpi_transport::send(task_id to, int tag, std::span<const std::byte> body) {
  const closed_pipe_scope pipes;
  constexpr int looks_between_tests = 500;
  const address where = address_of(to);
  if (where.channel == MPI_COMM_NULL || body.size() > INT_MAX) return false;
  MPI_Request request = MPI_REQUEST_NULL;
  if (MPI_Isend(body.data(), static_cast<int>(body.size()), MPI_BYTE, where.rank, tag,
                where.channel, &request) != MPI_SUCCESS)
    return false;
  for (int look = 1;; ++look) {
    int done = 0;
    if (MPI_Test(&request, &done, MPI_STATUS_IGNORE) != MPI_SUCCESS) return false;
    if (done) return true;
    if (look % looks_between_tests == 0 && may_wait_ &&
        !may_wait_(to, 1e-6 * look * between_looks)) {
      MPI_Cancel(&request);
      MPI_Request_free(&request);
      return false;
    }
    usleep(between_looks);
  }
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
