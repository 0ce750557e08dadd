// The files that a run has read, with a digest of their bytes, to tell which data a result is of.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace zeb {

struct file_read {
  std::string name;         // as it was opened
  std::int64_t bytes = -1;  // of the file itself, compressed or not; -1: a pipe or the like
  std::string digest;     // SHA-256 as 64 hexadecimal digits; empty for what can be read once only
  int versions = 1;       // that this name stood for at some reading; the last one is told
  struct stat status {};  // when it was read
};
struct files_read_state {
  std::vector<file_read> files;                            // in the order of first reading
  std::unordered_map<std::string, std::size_t> number_of;  // by name: which of them
};
extern files_read_state files_read;  // written by the function of this file only

/// Notes a file that has just been opened. The descriptor stays where it is.
void note_file_read(const std::string& name, int descriptor, const struct stat& status);

}  // namespace zeb
