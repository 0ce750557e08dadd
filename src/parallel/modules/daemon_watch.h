// Open MPI starts a daemon for a process that nobody launched. It may hang when the process has
// ended, and then keeps the outputs of that open for whoever reads them. A small process watches.
#pragma once

#include <sys/types.h>

namespace zeb {

/// Before the library starts, with threads that a copy of the process lacks.
void begin_daemon_watch();
/// The child that came with it; 0: there is none.
pid_t daemon_of_this_process();
/// After it has started.
void tell_daemon_watch();

}  // namespace zeb
