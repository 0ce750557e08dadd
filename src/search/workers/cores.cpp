#include "search/workers/cores.h"

#include <sched.h>

#include <algorithm>

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
  if (process.slave || cores.dividing || cores.wanted < 2 || parts < 2) return 0;
  return std::min(cores.wanted, parts);
}

void note_division(bool dividing) { cores.dividing = dividing; }

void note_workers(const std::vector<worker_record>& workers) {
  if (cores.command != command.command_name || cores.begun != command.start) cores.workers.clear();
  cores.command = command.command_name;
  cores.begun = command.start;
  cores.workers.resize(std::max(cores.workers.size(), workers.size()));
  for (std::size_t i = 0; i < workers.size(); ++i) {
    worker_record& all = cores.workers[i];
    all.process = workers[i].process;
    all.parts += workers[i].parts;
    all.seconds += workers[i].seconds;
    all.peak = std::max(all.peak, workers[i].peak);
    all.own = std::max(all.own, workers[i].own);
    all.lost |= workers[i].lost;
  }
}

}  // namespace zeb
