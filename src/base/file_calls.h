// The calls of the system that all files are read and written by, in one place so that a test can
// make any of them fail.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

namespace zeb {

// Each returns what the call of the system returns, and leaves the cause of a failure in `errno`;
// a call that a signal interrupted is made again.

/// Never follows a link in place of the file itself where `flags` hold O_NOFOLLOW.
int call_open(const std::string& name, int flags, mode_t mode = 0);
ssize_t call_read(int descriptor, void* to, std::size_t bytes);
ssize_t call_write(int descriptor, const void* from, std::size_t bytes);
int call_sync(int descriptor);
int call_close(int descriptor);
int call_rename(const std::string& from, const std::string& to);
int call_remove(const std::string& name);
int call_truncate(int descriptor, off_t length);

/// The cause of the failure that has just happened, in words.
std::string last_cause();

}  // namespace zeb
