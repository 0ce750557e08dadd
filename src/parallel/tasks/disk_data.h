// Data that tasks read from a file of their machine.
#pragma once

#include <string>

#include "parallel/messages/contents.h"

namespace zeb {

constexpr const char* disk_data_file = ".zeb_tmpfile";

/// The commands that read the data, from the file that the orders tell. What is wrong with the file
/// is told to the parent, and an error.
std::string data_of_disk(const task_orders& orders);
/// The file's text for these data.
std::string disk_data_text(int characters, int taxa, int cell_bytes, const std::string& data);
/// Writes that to the folder, or without one to the working directory. What went wrong; empty:
/// nothing.
std::string write_disk_file(const std::string& directory, const std::string& text);

}  // namespace zeb
