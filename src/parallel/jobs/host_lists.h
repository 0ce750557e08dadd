// Hosts as commands name them.
#pragma once

#include <vector>

namespace zeb {

/// So many tasks on a host; -1 wherever the transport likes, 0 not told.
struct host_share {
  int host = -1;
  int tasks = 0;
};

/// Hosts by number or name, "myself" this machine, each with "(N)" where the number of its tasks is
/// told. Ends where no host comes next. Errors: no such host.
std::vector<host_share> read_host_list();

}  // namespace zeb
