// Jumps to labels of run files.
#pragma once

#include <string>
#include <vector>

namespace zeb {

/// Error for a label that is too long.
void check_label(const std::string& label);

/// Blank-delimited words up to ";", with the limits of run-file arguments.
std::vector<std::string> read_file_arguments(const std::string& file);

/// Reads on in `file` after its command `label` of that name (case ignored). The file is opened on
/// the input stack, or rewound if it is the one being read. Without such a label the command ends
/// with an error.
void jump_to_label(const std::string& file, const std::string& label,
                   const std::vector<std::string>& arguments);

/// Goes to the file and label that `goto [` set for errors.
void run_error_target();

}  // namespace zeb
