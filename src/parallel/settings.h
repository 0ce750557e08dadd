// The settings of parallel runs, for a master and for a task that has tasks of its own.
#pragma once

#include <string>

namespace zeb {

enum class back_end { pvm = 1, mpi = 2, local = 3 };  // the values of `pmode`
const char* back_end_name(back_end which);

struct parallel_settings {
  back_end mode = back_end::mpi;
  int communication_time = 3;  // seconds between two looks at what the parent says
  int get_timeout = 0;         // seconds that `get` waits; 0 no limit
  int task_ram = 0;            // MB for each task; 0: as much as the parent has
  bool raw_encoding = true;    // `encode raw`: all machines are of one architecture
  bool mnemonic = false;       // what tasks told is remembered after `wait`
  bool catch_output = false;   // PVM: what tasks write to the standard error is shown
  bool disk_directory_set = false;
  std::string disk_directory;  // of the data file; empty: where the task runs
  std::string host_file = "./hostfile";
};
extern parallel_settings parallel;  // written in parallel/ only

void set_back_end(back_end which);
/// All but the back end, whose mode may have been entered.
void take_settings(const parallel_settings& wanted);
void set_disk_directory(const std::string& directory);

}  // namespace zeb
