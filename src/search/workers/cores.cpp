#include "search/workers/cores.h"

#include <sched.h>

#include <algorithm>
#include <utility>

#include "base/command.h"
#include "base/process.h"

namespace zeb {

cores_state cores;

void set_cores(int number) { cores.wanted = number; }

int processors_here() {
  cpu_set_t set;
  CPU_ZERO(&set);
  if (sched_getaffinity(0, sizeof set, &set) != 0) return 1;
  return std::clamp(CPU_COUNT(&set), 1, most_cores);
}

int workers_for(int parts) {
  if (process.slave || cores.wanted < 2 || parts < 2) return 0;
  return std::min(cores.wanted, parts);
}

void note_workers(std::vector<worker_record> workers) {
  cores.command = command.command_name;
  cores.workers = std::move(workers);
}

}  // namespace zeb
