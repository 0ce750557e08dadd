// Which files are open, so that none is written while it is read or written elsewhere.
#pragma once

#include <sys/stat.h>

#include <string>
#include <vector>

namespace zeb {

/// One opening of a regular file. Pipes and devices aren't noted: they may be open more than once.
struct open_file {
  int number = 0;  // tells the openings apart
  std::string name;
  bool written = false;
  dev_t device = 0;
  ino_t node = 0;  // 0: a file that isn't there yet
};
struct open_files_state {
  std::vector<open_file> files;
  int last_number = 0;
  bool standard_input_taken = false;
};
extern open_files_state& open_files;  // written by the functions of this file only

/// Notes an opening; returns its number, 0 for what isn't a regular file.
int note_open_file(const std::string& name, bool written, const struct stat& status);
/// A file of the name that is to come.
int note_coming_file(const std::string& name);
/// It is there now.
void note_file_in_place(int number, const struct stat& status);
void forget_open_file(int number);

/// The standard input is read by one reader only. False: it has been taken.
bool take_standard_input();

/// " (Input/output error)"; nothing where there was no such file, as messages say enough then.
std::string cause_text(const std::string& fault);

/// The opening of the file of that name, for writing only or for either; null for none.
const open_file* find_open_file(const std::string& name, bool written_only);

}  // namespace zeb
