// Steering files of background runs.
#pragma once

#include <string>

namespace zeb {

/// Looks at the stop and pause files, at most once in ten seconds. Waits while the pause file
/// exists. True if the run is to stop; the stop file is gone then.
bool stop_asked_by_file();

/// New instructions for a background run: the file that the user left, and the copy to be run.
struct execute_file {
  std::string name;
  std::string copy;
};
/// Copies and removes the execute file; both names are empty where there is none.
execute_file take_execute_file();

}  // namespace zeb
