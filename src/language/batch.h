// Batch runs: run files without a user, each in a process of its own.
#pragma once

#include <span>
#include <string>

namespace zeb {

/// Has `run` called with each file in turn, in a process of its own where there are several, and
/// returns the exit status of the first that failed, or 0. A file that a signal ended is the last.
int run_batch(std::span<const std::string> files, int (*run)(const std::string& file));

}  // namespace zeb
