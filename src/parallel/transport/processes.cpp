#include "parallel/transport/processes.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

namespace zeb {
namespace {

/// The head of what the system tells of a process; empty: nothing.
std::string told_of(int number, const char* what) {
  const std::string name = "/proc/" + std::to_string(number) + "/" + what;
  const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return {};
  std::array<char, 1024> bytes{};
  const ssize_t count = read(file, bytes.data(), bytes.size());
  close(file);
  return {bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
}

/// The letter after the name of the program, which stands in brackets; 0: it is not known.
char state_of(int number) {
  const std::string text = told_of(number, "stat");
  const std::size_t end = text.rfind(')');
  return end != text.npos && end + 2 < text.size() ? text[end + 2] : '\0';
}

}  // namespace

bool process_runs(int number) {
  if (kill(number, 0) != 0 && errno != EPERM) return false;
  const char state = state_of(number);
  return state != 'Z' && state != 'X';
}

bool process_was_called_with(int number, std::string_view word) {
  const std::string words = told_of(number, "cmdline") + '\0';
  return words.find('\0' + std::string(word) + '\0') != words.npos;
}

}  // namespace zeb
