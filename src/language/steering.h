// Steering files of background runs.
#pragma once

#include <string>

#include "base/input_file.h"

namespace zeb {

/// Looks at the stop and pause files, at most once in ten seconds. Waits while the pause file
/// exists. True if the run is to stop; the stop file is gone then.
bool stop_asked_by_file();

/// New instructions for a background run: the file that the user left, and its copy, to be run.
struct execute_file {
  std::string name;
  input_file instructions;  // not open: none
};
/// Copies and removes the execute file, if there is one.
execute_file take_execute_file();

/// When a background run begins: removes steering files that an earlier process of the same number
/// left.
void remove_left_steering_files();

}  // namespace zeb
