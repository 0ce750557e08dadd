#include "parallel/settings.h"

namespace zeb {

parallel_settings parallel;

void set_back_end(back_end which) { parallel.mode = which; }

void take_settings(const parallel_settings& wanted) {
  const back_end mode = parallel.mode;
  parallel = wanted;
  parallel.mode = mode;
}

void set_disk_directory(const std::string& directory) { parallel.disk_directory = directory; }

const char* back_end_name(back_end which) {
  if (which == back_end::pvm) return "PVM";
  return which == back_end::mpi ? "MPI" : "local";
}

}  // namespace zeb
