// Open MPI starts a daemon for a process that nobody launched. It may hang when the process has
// ended, and then keeps the outputs of that open for whoever reads them. A small process watches.
#pragma once

namespace zeb {

/// Before the library starts, with threads that a copy of the process lacks.
void begin_daemon_watch();
/// After: the daemon is the child that came with it.
void tell_daemon_watch();

}  // namespace zeb
