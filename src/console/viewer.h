// The viewer: pages through the text buffer or a file, on the console only.
#pragma once

#include <string>

namespace zeb {

/// Shows the text buffer until the user leaves; returns at once where there is no user.
void show_buffer_in_viewer();
/// The same for a file. False when it can't be read; `refusal` tells why where that isn't plain.
bool show_file_in_viewer(const std::string& name, std::string& refusal);

}  // namespace zeb
