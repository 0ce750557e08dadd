// Tasks that Open MPI starts on this machine, from before they have joined the others: nothing
// else tells that one of them has died.
#pragma once

#include <sys/types.h>

#include <string_view>
#include <vector>

namespace zeb {

class joining_watch {
 public:
  /// Of the children that the daemon gets from now on. `argument` is the first one of tasks.
  joining_watch(pid_t daemon, std::string_view argument);
  /// Has one of them ended?
  bool lost_one();
  void kill_all();

 private:
  std::vector<pid_t> children() const;

  pid_t daemon_;  // 0: there is none, and nothing is known
  std::string_view argument_;
  std::vector<pid_t> former_;  // not to be watched
  std::vector<pid_t> tasks_;
};

}  // namespace zeb
