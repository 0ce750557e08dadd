#include "parallel/transport/processes.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>

namespace zeb {
namespace {

/// The letter after the name of the program, which stands in brackets; 0: it is not known.
char state_of(int number) {
  std::array<char, 32> name{};
  std::snprintf(name.data(), name.size(), "/proc/%i/stat", number);
  const int file = open(name.data(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return 0;
  std::array<char, 256> bytes{};
  const ssize_t count = read(file, bytes.data(), bytes.size());
  close(file);
  const std::string_view text(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  const std::size_t end = text.rfind(')');
  return end != text.npos && end + 2 < text.size() ? text[end + 2] : '\0';
}

}  // namespace

bool process_runs(int number) {
  if (kill(number, 0) != 0 && errno != EPERM) return false;
  const char state = state_of(number);
  return state != 'Z' && state != 'X';
}

}  // namespace zeb
