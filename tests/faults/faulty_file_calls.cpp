// Stands in for src/base/file_calls.cpp in a program for tests: one of the calls goes wrong, as the
// environment says.
//
//   ZEB_FAULT=<kind>:<number>:<manner>   kind: open, read, write, sync, close, rename, remove,
//   truncate
//                                        or any; manner: fail, short (of a write a part is written
//                                        first) or kill
//   ZEB_FAULT_MARK=<file>                made when it happens
//
// Calls are counted from the opening of a file on whose name ends in "begin.faults".
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/file_calls.h"

namespace zeb {
namespace {

class planned_fault {
 public:
  planned_fault() {
    const char* plan = std::getenv("ZEB_FAULT");
    if (!plan) return;
    const std::string text = plan;
    const std::size_t first = text.find(':');
    const std::size_t second = text.rfind(':');
    kind_ = text.substr(0, first);
    left_ = std::atoi(text.substr(first + 1, second - first - 1).c_str());
    manner_ = text.substr(second + 1);
  }
  void begin() { begun_ = true; }
  bool is_short() const { return manner_ == "short"; }
  /// After a short write the next one fails.
  void go_on() { goes_on_ = true; }
  bool goes_on() {
    errno = ENOSPC;
    return std::exchange(goes_on_, false);
  }
  /// Does this call go wrong?
  bool comes(std::string_view kind) {
    if (!begun_ || left_ <= 0 || (kind_ != "any" && kind_ != kind)) return false;
    if (--left_ > 0) return false;
    if (const char* mark = std::getenv("ZEB_FAULT_MARK")) {
      ::close(::open(mark, O_CREAT | O_WRONLY, 0600));
    }
    if (manner_ == "kill") raise(SIGKILL);
    errno = kind == "write" ? ENOSPC : EIO;
    return true;
  }

 private:
  bool begun_ = false;
  bool goes_on_ = false;
  std::string kind_, manner_;
  int left_ = 0;
};
planned_fault fault;

}  // namespace

int call_open(const std::string& name, int flags, mode_t mode) {
  if (name.ends_with("begin.faults")) {
    fault.begin();
  } else if (fault.comes("open")) {
    return -1;
  }
  return open(name.c_str(), flags, mode);
}

ssize_t call_read(int descriptor, void* to, std::size_t bytes) {
  return fault.comes("read") ? -1 : read(descriptor, to, bytes);
}

ssize_t call_write(int descriptor, const void* from, std::size_t bytes) {
  if (fault.goes_on()) return -1;
  if (!fault.comes("write")) return write(descriptor, from, bytes);
  if (!fault.is_short()) return -1;
  fault.go_on();
  return write(descriptor, from, (bytes + 1) / 2);
}

int call_sync(int descriptor) { return fault.comes("sync") ? -1 : fsync(descriptor); }

int call_close(int descriptor) {
  const bool fails = fault.comes("close");
  const int result = close(descriptor);
  if (!fails) return result;
  errno = EIO;
  return -1;
}

int call_rename(const std::string& from, const std::string& to) {
  return fault.comes("rename") ? -1 : std::rename(from.c_str(), to.c_str());
}

int call_remove(const std::string& name) {
  return fault.comes("remove") ? -1 : unlink(name.c_str());
}

int call_truncate(int descriptor, off_t length) {
  return fault.comes("truncate") ? -1 : ftruncate(descriptor, length);
}

std::string last_cause() { return std::generic_category().message(errno); }

}  // namespace zeb
