#include "base/output_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <random>
#include <system_error>
#include <utility>

#include "base/file_calls.h"
#include "base/open_files.h"
#include "base/safe_mode.h"

namespace zeb {

namespace {

constexpr std::size_t most_waiting = 65536;
constexpr std::string_view beside_begin = ".zeb-";
constexpr std::string_view beside_end = ".part";
constexpr std::size_t beside_letters = 16;

std::string directory_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return "./";
  return path.substr(0, slash + 1);
}

// Nobody can tell the name beforehand, and plant something there.
std::string beside_name(const std::string& directory) {
  constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
  std::random_device source;
  std::uniform_int_distribution<std::size_t> choice(0, letters.size() - 1);
  std::string name = directory;
  name += beside_begin;
  for (std::size_t i = 0; i < beside_letters; ++i) name += letters[choice(source)];
  name += beside_end;
  return name;
}

bool is_beside_name(std::string_view name) {
  return name.size() == beside_begin.size() + beside_letters + beside_end.size() &&
         name.starts_with(beside_begin) && name.ends_with(beside_end);
}

// Who writes a file beside holds its lock: one that can be locked was left by a process that died.
void remove_if_left(const std::string& name) {
  const int descriptor = call_open(name, O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return;
  struct stat status;
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
      flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
    unlink(name.c_str());
  }
  ::close(descriptor);
}

void remove_left_files(const std::string& directory) {
  DIR* const entries = opendir(directory.c_str());
  if (!entries) return;
  while (const dirent* entry = readdir(entries)) {  // NOLINT(concurrency-mt-unsafe)
    if (is_beside_name(entry->d_name)) remove_if_left(directory + entry->d_name);
  }
  closedir(entries);
}

// "/dev/stdout" and its like: the descriptor, whatever it leads to; -1 for other names.
int standard_descriptor(std::string_view name) {
  if (name == "/dev/stdout") return STDOUT_FILENO;
  if (name == "/dev/stderr") return STDERR_FILENO;
  constexpr std::string_view numbered = "/dev/fd/";
  if (!name.starts_with(numbered)) return -1;
  name.remove_prefix(numbered.size());
  int number = -1;
  const auto [end, fault] = std::from_chars(name.data(), name.data() + name.size(), number);
  return fault == std::errc() && end == name.data() + name.size() ? number : -1;
}

// In a folder where everybody may put files nobody else's link is followed.
bool is_planted_link(const std::string& path) {
  struct stat link;
  struct stat folder;
  return lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode) && link.st_uid != geteuid() &&
         stat(directory_of(path).c_str(), &folder) == 0 && (folder.st_mode & S_ISVTX) &&
         (folder.st_mode & S_IWOTH) && link.st_uid != folder.st_uid;
}

// The same whatever the working directory is by then. Empty, with `errno`, where there is no such
// folder.
std::string absolute(const std::string& path) {
  std::error_code fault;
  const std::string folder = directory_of(path);
  const std::filesystem::path whole = std::filesystem::canonical(folder, fault);
  errno = fault.value();
  return fault ? std::string() : (whole / path.substr(path.rfind('/') + 1)).string();
}

// The file that the name leads to by links, which need not be there; empty, with `errno`, where it
// can't be told.
std::string followed(std::string path) {
  constexpr int most_links = 40;
  for (int i = 0; i < most_links; ++i) {
    if (is_planted_link(path)) {
      errno = EACCES;
      return {};
    }
    std::error_code fault;
    const std::filesystem::path next = std::filesystem::read_symlink(path, fault);
    if (fault) return absolute(path);
    path = next.is_absolute() ? next.string() : directory_of(path) + next.string();
  }
  errno = ELOOP;
  return {};
}

}  // namespace

output_file::output_file(output_file&& other) noexcept { *this = std::move(other); }

output_file& output_file::operator=(output_file&& other) noexcept {
  if (this == &other) return *this;
  discard();
  descriptor_ = std::exchange(other.descriptor_, -1);
  number_ = std::exchange(other.number_, 0);
  name_ = std::move(other.name_);
  target_ = std::move(other.target_);
  folder_ = std::move(other.folder_);
  beside_ = std::move(other.beside_);
  waiting_ = std::move(other.waiting_);
  regular_ = other.regular_;
  failed_ = other.failed_;
  length_ = other.length_;
  whole_ = other.whole_;
  fault_ = std::move(other.fault_);
  other.forget();
  return *this;
}

bool output_file::fail() {
  fault_ = last_cause();
  failed_ = true;
  return false;
}

bool output_file::may_be_written(const std::string& target) {
  if (target.empty()) return fail();
  fault_ = find_open_file(target, false) ? "it is in use" : refusal_of_writing(target);
  return fault_.empty();
}

void output_file::begin(const std::string& name) {
  discard();
  fault_.clear();
  name_ = name;
  waiting_.reserve(most_waiting);
}

bool output_file::create(const std::string& name, bool is_private) {
  begin(name);
  try {
    return create_under(name, is_private);
  } catch (...) {
    discard();
    throw;
  }
}

bool output_file::create_under(const std::string& name, bool is_private) {
  const int standard = standard_descriptor(name);
  if (standard >= 0 && (!safe_mode.on || standard <= STDERR_FILENO)) {
    descriptor_ = fcntl(standard, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    return is_open() || fail();
  }
  const std::string target = is_private ? absolute(name) : followed(name);
  if (!may_be_written(target)) return false;
  // Whatever was put there goes, with the rights that others had on it.
  if (is_private) return open_beside(target, S_IRUSR | S_IWUSR);
  struct stat former;
  const bool replaces = stat(target.c_str(), &former) == 0;
  if (!replaces && errno != ENOENT) return fail();
  if (replaces && !S_ISREG(former.st_mode)) return open_as_it_is(target, 0);
  if (replaces && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) return fail();
  return open_beside(target, replaces ? std::optional(former.st_mode & 07777) : std::nullopt);
}

// A new file with a name that nobody knew, locked; false where it can't be had.
bool output_file::make_beside(const std::string& directory, mode_t mode) {
  constexpr int most_tries = 5;
  for (int i = 1;; ++i) {
    beside_ = beside_name(directory);
    descriptor_ = call_open(beside_, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    if (!is_open()) {
      beside_.clear();
      return fail();
    }
    // Who clears up may have come first: it holds the lock then, or has removed the file.
    struct stat status;
    const bool is_ours = flock(descriptor_, LOCK_EX | LOCK_NB) == 0 &&
                         fstat(descriptor_, &status) == 0 && status.st_nlink > 0;
    if (is_ours || i == most_tries) return true;  // where files can't be locked nobody removes them
    unlink(beside_.c_str());
    ::close(std::exchange(descriptor_, -1));
  }
}

bool output_file::open_beside(const std::string& target, std::optional<mode_t> mode) {
  const std::string directory = directory_of(target);
  if (target.size() == directory.size() || target.substr(directory.size()).size() > NAME_MAX) {
    errno = target.size() == directory.size() ? EISDIR : ENAMETOOLONG;
    return fail();
  }
  remove_left_files(directory);
  if (!make_beside(directory, mode ? S_IRUSR | S_IWUSR : 0666)) return false;
  if (mode && fchmod(descriptor_, *mode) != 0) {
    fail();
    discard();
    return false;
  }
  target_ = target;
  folder_ = directory;
  regular_ = true;
  number_ = note_coming_file(target);
  return true;
}

// Pipes, devices and files that are appended to.
bool output_file::open_as_it_is(const std::string& name, int flags) {
  descriptor_ = call_open(name, O_WRONLY | O_CLOEXEC | O_NOCTTY | flags, 0666);
  struct stat status;
  if (!is_open() || fstat(descriptor_, &status) != 0) return fail();
  target_ = name;
  regular_ = S_ISREG(status.st_mode);
  length_ = whole_ = status.st_size;
  note_written_file(name);
  number_ = note_open_file(name, true, status);
  return true;
}

bool output_file::append(const std::string& name) {
  begin(name);
  const std::string target = followed(name);
  if (!may_be_written(target)) return false;
  try {
    return open_as_it_is(target, O_APPEND | O_CREAT | O_NOFOLLOW);
  } catch (...) {
    discard();
    throw;
  }
}

void output_file::put(std::string_view text) {
  if (!is_open()) return;
  if (waiting_.size() + text.size() > most_waiting) write_out();
  if (text.size() > most_waiting) return write_all(text);
  waiting_ += text;
}

off_t output_file::position() const { return length_ + static_cast<off_t>(waiting_.size()); }

void output_file::go_back(off_t to) {
  if (!is_open() || failed_ || to >= position()) return;
  if (to >= length_) return waiting_.resize(static_cast<std::size_t>(to - length_));
  waiting_.clear();
  if (!regular_) return;
  if (call_truncate(descriptor_, to) != 0) {
    failed_ = true;
    return;
  }
  lseek(descriptor_, to, SEEK_SET);
  length_ = to;
}

void output_file::print(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string text(static_cast<std::size_t>(length) + 1, 0);
  std::vsnprintf(text.data(), text.size(), format, again);
  va_end(again);
  text.pop_back();
  put(text);
}

void output_file::write_out() {
  write_all(waiting_);
  waiting_.clear();
}

void output_file::write_all(std::string_view text) {
  while (!text.empty() && !failed_) {
    const ssize_t n = call_write(descriptor_, text.data(), text.size());
    if (n < 0) fail();
    if (n <= 0) continue;
    text.remove_prefix(static_cast<std::size_t>(n));
    length_ += n;
  }
}

// What a failed call left of the text doesn't stay at the end of a file that has its name. Where
// somebody else appends as well, theirs does.
void output_file::take_back() {
  struct stat status;
  if (!regular_ || !beside_.empty() || fstat(descriptor_, &status) != 0) return;
  if (status.st_size != length_) return;
  if (call_truncate(descriptor_, whole_) != 0) return;
  lseek(descriptor_, whole_, SEEK_SET);
  length_ = whole_;
  failed_ = false;
}

bool output_file::flush() {
  if (!is_open()) return false;
  write_out();
  if (failed_) {
    take_back();
    return false;
  }
  whole_ = length_;
  return true;
}

bool output_file::publish() {
  if (!flush()) return false;
  if (beside_.empty()) return true;
  if (call_sync(descriptor_) != 0) return fail();
  if (call_rename(beside_, target_) != 0) return fail();
  beside_.clear();
  note_written_file(target_);
  struct stat status;
  if (fstat(descriptor_, &status) == 0) note_file_in_place(number_, status);
  // The entry of the folder is to last, too. Where folders can't be synchronised nothing is lost.
  const int folder = call_open(folder_, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0) {
    fsync(folder);
    ::close(folder);
  }
  return true;
}

bool output_file::close() {
  if (!is_open()) return true;
  bool good = publish();
  if (call_close(std::exchange(descriptor_, -1)) != 0) good = fail();
  discard();
  return good;
}

void output_file::discard() {
  if (is_open()) ::close(std::exchange(descriptor_, -1));
  if (!beside_.empty()) unlink(beside_.c_str());
  forget();
}

void output_file::forget() {
  forget_open_file(number_);
  number_ = 0;
  target_.clear();
  beside_.clear();
  waiting_.clear();
  regular_ = failed_ = false;
  length_ = whole_ = 0;
}

}  // namespace zeb
