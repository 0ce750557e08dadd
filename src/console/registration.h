// What the console hands down at start-up.
#pragma once

namespace zeb {

/// Makes the text buffer, before any output; every command's end clears its progress line.
void register_console();

}  // namespace zeb
