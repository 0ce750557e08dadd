// Stands in for src/base/file_calls.cpp in a program for tests: one of the calls goes wrong.
#include "base/file_calls.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include "planned_fault.h"

namespace zeb {

int call_open(const std::string& name, int flags, mode_t mode) {
  if (!is_fault_signal(name) && fault_comes("open")) return -1;
  return open(name.c_str(), flags, mode);
}

ssize_t call_read(int descriptor, void* to, std::size_t bytes) {
  return fault_comes("read") ? -1 : read(descriptor, to, bytes);
}

ssize_t call_write(int descriptor, const void* from, std::size_t bytes) {
  if (write_fails_now()) return -1;
  if (!fault_comes("write")) return write(descriptor, from, bytes);
  if (!is_short_write()) return -1;
  return write(descriptor, from, (bytes + 1) / 2);
}

int call_sync(int descriptor) { return fault_comes("sync") ? -1 : fsync(descriptor); }

int call_close(int descriptor) {
  const bool fails = fault_comes("close");
  const int result = close(descriptor);
  if (!fails) return result;
  errno = EIO;
  return -1;
}

int call_rename(const std::string& from, const std::string& to) {
  return fault_comes("rename") ? -1 : std::rename(from.c_str(), to.c_str());
}

int call_remove(const std::string& name) {
  return fault_comes("remove") ? -1 : unlink(name.c_str());
}

int call_truncate(int descriptor, off_t length) {
  return fault_comes("truncate") ? -1 : ftruncate(descriptor, length);
}

std::string last_cause() { return std::generic_category().message(errno); }

}  // namespace zeb
