// A process between this one and tasks over MPI. A death among tasks that join each other can leave
// the library waiting for ever in the process that spawned them; so that is one that can be given
// up, and new tasks are joined by another one.
#pragma once

namespace zeb {

/// The first argument of gateways; the descriptor of the socket to their process comes after it.
constexpr const char* gateway_argument = "mpi_gateway";

/// What the socket carries besides messages of tasks, which bear tags from 0 up.
enum gateway_word : int {
  gateway_ready = -10,    // to the process: whether it could start, why not, the hosts
  gateway_spawn = -11,    // to the gateway: tasks are wanted
  gateway_spawned = -12,  // to the process: their ids, and what went wrong
  gateway_forget = -13,   // to the gateway: tasks that nothing is expected from any more
};

/// Lives until its process is gone; then so are its tasks.
[[noreturn]] void run_gateway(int descriptor);

}  // namespace zeb
