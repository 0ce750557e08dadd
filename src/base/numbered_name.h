// Names of files that are written several at a time.
#pragma once

#include <string>

namespace zeb {

/// "name_T_C.svg" of "name.svg", with the numbers that aren't below 0.
std::string numbered_file_name(const std::string& name, int first, int second = -1);

}  // namespace zeb
