// Reading of files that hold one data set each, for commands that look at several of them.
#pragma once

#include <string>

#include "compare/data_set.h"

namespace zeb {

/// Reads the file by the ordinary readers and takes a copy of data, settings and trees. What is in
/// memory goes; the session's settings stay. Commands that neither bring data nor set what belongs
/// to them are skipped. Errors: can't be opened, more than one data set, no end. A file without
/// data gives an empty data set.
data_set read_data_file(const std::string& file);
/// Reads a file that the program wrote, which becomes the data in memory, trees included.
void read_back(const std::string& file);

}  // namespace zeb
