#include "parallel/tasks/parent_watch.h"

#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "parallel/transport/connection.h"
#include "parallel/transport/processes.h"

namespace zeb {

std::string address_of_this_process() {
  return std::to_string(getpid()) + "@" + name_of_this_machine();
}

int process_on_this_machine(const std::string& address) {
  const std::size_t at = address.find('@');
  if (at == address.npos || address.substr(at + 1) != name_of_this_machine()) return 0;
  return std::atoi(address.c_str());
}

// A task that looks at messages ends by itself, in good order, before its time is over.
void end_after(int process) {
  constexpr unsigned between_looks = 1;  // seconds
  constexpr unsigned to_end_in_order = 2;
  std::thread([process] {
    while (process_runs(process)) sleep(between_looks);
    sleep(to_end_in_order);
    _exit(status_of_orphan);
  }).detach();
}

}  // namespace zeb
