#include "base/open_files.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace zeb {

// Never destroyed: files are closed at the very end, too.
open_files_state& open_files = *new open_files_state;

int note_open_file(const std::string& name, bool written, const struct stat& status) {
  if (!S_ISREG(status.st_mode)) return 0;
  open_files.files.push_back(
      {++open_files.last_number, name, written, status.st_dev, status.st_ino});
  return open_files.last_number;
}

int note_coming_file(const std::string& name) {
  open_files.files.push_back({++open_files.last_number, name, true, 0, 0});
  return open_files.last_number;
}

void note_file_in_place(int number, const struct stat& status) {
  for (open_file& file : open_files.files) {
    if (file.number != number) continue;
    file.device = status.st_dev;
    file.node = status.st_ino;
  }
}

void forget_open_file(int number) {
  std::erase_if(open_files.files, [&](const open_file& file) { return file.number == number; });
}

bool take_standard_input() { return !std::exchange(open_files.standard_input_taken, true); }

std::string cause_text(const std::string& fault) {
  if (fault.empty() || fault == std::generic_category().message(ENOENT)) return {};
  return " (" + fault + ")";
}

const open_file* find_open_file(const std::string& name, bool written_only) {
  struct stat status;
  const bool there = stat(name.c_str(), &status) == 0;
  const auto found =
      std::find_if(open_files.files.begin(), open_files.files.end(), [&](const open_file& file) {
        if (written_only && !file.written) return false;
        if (file.written && file.name == name) return true;
        return there && file.node != 0 && file.device == status.st_dev &&
               file.node == status.st_ino;
      });
  return found == open_files.files.end() ? nullptr : &*found;
}

}  // namespace zeb
