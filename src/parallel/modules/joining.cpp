#include "parallel/modules/joining.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <climits>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "parallel/modules/daemon_watch.h"
#include "parallel/modules/joining_watch.h"
#include "parallel/modules/mpi_environment.h"

namespace zeb {
namespace {

constexpr int tag_joined = 32'000;  // above those of messages

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

std::string text_of_error(int code) {
  std::array<char, MPI_MAX_ERROR_STRING> text{};
  int length = 0;
  MPI_Error_string(code, text.data(), &length);
  return text.data();
}

/// Until when tasks are waited for that were started, and what is done meanwhile.
class joining {
 public:
  explicit joining(const spawn_request& request)
      : request_(request), watch_(daemon_of_this_process(), request.argument) {}
  /// After a while of waiting: is there hope?
  bool may_go_on();
  /// Of all that was started.
  void give_up() { watch_.kill_all(); }
  std::string why_not() const {
    return lost_ ? "a task ended while it joined the others" : "the tasks didn't join in time";
  }

 private:
  using clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds between_looks_{50};
  const spawn_request& request_;
  joining_watch watch_;
  bool lost_ = false;
  clock::time_point end_ =
      clock::now() + std::chrono::seconds(seconds_to_join() * 3 / 2 + request_.count);
  clock::time_point next_look_;
};

bool joining::may_go_on() {
  if (request_.meanwhile) request_.meanwhile();
  const clock::time_point now = clock::now();
  if (now >= next_look_) {
    lost_ = watch_.lost_one();
    next_look_ = now + between_looks_;
  }
  return !lost_ && now < end_;
}

/// Where a task dies, the library may wait for it without end, in a thread that is left to it.
/// Nothing: they won't join.
std::optional<spawn_outcome> join_in_time(const spawn_request& request, MPI_Info info,
                                          joining& progress) {
  constexpr std::chrono::milliseconds between_looks(5);
  std::promise<spawn_outcome> promise;
  std::future<spawn_outcome> outcome = promise.get_future();
  std::thread([promise = std::move(promise), argument = std::string(request.argument),
               parent = request.parent, count = request.count, info]() mutable {
    promise.set_value(join_tasks(argument, parent, count, info));
  }).detach();
  while (outcome.wait_for(between_looks) != std::future_status::ready)
    if (!progress.may_go_on()) return std::nullopt;
  return outcome.get();
}

/// Each says so when it has: the spawner knows it before them.
bool all_have_joined(MPI_Comm channel, int count, joining& progress) {
  constexpr useconds_t between_looks = 1'000;  // microseconds
  while (count > 0) {
    int there = 0;
    if (MPI_Iprobe(MPI_ANY_SOURCE, tag_joined, channel, &there, MPI_STATUS_IGNORE) != MPI_SUCCESS)
      return false;
    if (there) {
      if (MPI_Recv(nullptr, 0, MPI_BYTE, MPI_ANY_SOURCE, tag_joined, channel, MPI_STATUS_IGNORE) !=
          MPI_SUCCESS)
        return false;
      --count;
      continue;
    }
    if (!progress.may_go_on()) return false;
    usleep(between_looks);
  }
  return true;
}

}  // namespace

MPI_Comm spawn_and_join(const spawn_request& request, MPI_Info info, std::string* fault) {
  joining progress(request);
  const std::optional<spawn_outcome> outcome = join_in_time(request, info, progress);
  if (outcome) MPI_Info_free(&info);
  if (outcome && outcome->code == MPI_SUCCESS && outcome->channel != MPI_COMM_NULL) {
    int started = 0;
    MPI_Comm_set_errhandler(outcome->channel, MPI_ERRORS_RETURN);
    MPI_Comm_remote_size(outcome->channel, &started);
    if (all_have_joined(outcome->channel, started, progress)) return outcome->channel;
    *fault = progress.why_not();
  } else {
    *fault = outcome ? text_of_error(outcome->code) : progress.why_not();
  }
  progress.give_up();
  return MPI_COMM_NULL;
}

void tell_joined(MPI_Comm parent) { MPI_Send(nullptr, 0, MPI_BYTE, 0, tag_joined, parent); }

}  // namespace zeb
