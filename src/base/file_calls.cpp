#include "base/file_calls.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "base/interrupts.h"
#include "base/signals.h"

namespace zeb {
namespace {

template <class call>
auto until_not_interrupted(call made) {
  auto result = made();
  while (result < 0 && errno == EINTR) result = made();
  return result;
}

// Pipes may make a call wait for ever: the user can stop it.
template <class result_type>
result_type heeding_signals(result_type result) {
  if (result >= 0 || errno != EINTR || noted_signal() == 0) return result;
  check_interrupt();
  errno = EINTR;
  return result;
}

}  // namespace

int call_open(const std::string& name, int flags, mode_t mode) {
  return until_not_interrupted([&] { return heeding_signals(open(name.c_str(), flags, mode)); });
}

ssize_t call_read(int descriptor, void* to, std::size_t bytes) {
  return until_not_interrupted([&] { return heeding_signals(read(descriptor, to, bytes)); });
}

ssize_t call_write(int descriptor, const void* from, std::size_t bytes) {
  return until_not_interrupted([&] { return write(descriptor, from, bytes); });
}

int call_sync(int descriptor) {
  return until_not_interrupted([&] { return fsync(descriptor); });
}

// Not made again: the descriptor is gone after an interruption, too.
int call_close(int descriptor) { return close(descriptor); }

int call_rename(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str());
}

int call_remove(const std::string& name) { return unlink(name.c_str()); }

int call_truncate(int descriptor, off_t length) {
  return until_not_interrupted([&] { return ftruncate(descriptor, length); });
}

std::string last_cause() { return std::generic_category().message(errno); }

}  // namespace zeb
