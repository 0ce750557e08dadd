// Names of files that a pattern matches.
#pragma once

#include <string>
#include <vector>

namespace zeb {

struct matching_files {
  std::vector<std::string> names;  // with the folder of the pattern, sorted
  bool reserved_names = false;     // some were left out, whose names scripts can't hold
};

/// Files and folders whose names fit a pattern, in which "*" stands for any characters of a name
/// and "^" for a blank. Error where the folder can't be read.
matching_files files_matching(const std::string& pattern);

}  // namespace zeb
