// Lines of the standard input, where there is no console to type them at.
#pragma once

#include <cstddef>

namespace zeb {

/// Shows the prompt and reads a line with its newline, or as much of it as `most` bytes hold, into
/// `text`; returns the bytes, 0 at the end. A signal while it waits interrupts.
std::size_t read_plain_line(char* text, std::size_t most);

}  // namespace zeb
