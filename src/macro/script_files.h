// The input files that a script reads item by item (`hifile`).
#pragma once

#include <string>
#include <vector>

#include "base/input_file.h"

namespace zeb {

struct script_file {
  std::string name;
  input_file file;
  int line = 0;  // newlines read
};

struct script_file_state {
  std::vector<script_file> files;
  int active = -1;      // index of the active file; -1 none
  int most_files = 10;  // `hifile =N`
};
extern script_file_state script_files;  // written by the functions of this file only

/// The active file: "No input file is active" without one.
script_file& active_script_file();
/// Next character, -1 at the end, and the same left unread. Error where the file can't be read.
int script_file_get(script_file& file);
int script_file_peek(script_file& file, std::size_t ahead = 0);
/// The characters of the next number, "inf" and "nan" too; what follows them stays unread. Empty
/// or not a number where none comes.
std::string script_file_number(script_file& file);
/// Next blank-delimited string; its delimiter stays unread.
std::string script_file_string(script_file& file);
/// Only blanks are left.
bool script_file_ended(script_file& file);
void close_script_files();

}  // namespace zeb
