// Hosts as commands name them.
#pragma once

#include <vector>

namespace zeb {

/// So many tasks on a host; -1 wherever the transport likes, 0 not told.
struct host_share {
  int host = -1;
  int tasks = 0;
};

/// Hosts by number, range, name or group, "myself" this machine, "parent" and "master" those; each
/// item with "(N)" where the number of tasks for each of its hosts is told. Ends where no host
/// comes next. Errors: no such host.
std::vector<host_share> read_host_list();
/// Where tasks go that aren't told: all hosts but that of this process and of its parent, or that
/// of this process where there is no other.
std::vector<int> usual_hosts();
/// Hosts become a kind of list.
void register_host_lists();

}  // namespace zeb
