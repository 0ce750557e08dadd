// Files that are written: what was there before stays until the new file is whole.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

#include "base/open_files.h"

namespace zeb {

/// A file being written. A new one grows beside its name and takes it when it is published, whole
/// and on the disk; until then the file of that name, if any, is what it was. Pipes and devices
/// are written as they are. After a failure nothing more is written.
class output_file {
 public:
  output_file() = default;
  ~output_file() { discard(); }
  output_file(output_file&&) noexcept;
  output_file& operator=(output_file&&) noexcept;

  /// Begins a new file. False, and `fault` says why, also for files that are in use. A name that
  /// is a link leads on. A private file is the user's alone, and takes the place of whatever was
  /// put under its name.
  bool create(const std::string& name, bool is_private = false);
  /// Goes on at the end of a file, or begins it. What is written then stands in the file at once.
  bool append(const std::string& name);
  bool is_open() const { return descriptor_ >= 0; }
  /// Can it be written on? Not after a failure that left a part of the text.
  bool goes_on() const { return is_open() && !failed_; }
  const std::string& name() const { return name_; }
  /// Where the name leads to, whatever the working directory is by now.
  const std::string& target() const { return target_; }
  /// What went wrong, in words; empty: nothing.
  const std::string& fault() const { return fault_; }
  /// The same to stand after the name in a message: " (it is in use)".
  std::string cause() const { return cause_text(fault_); }

  /// Adds the text, for which no memory is needed; failures show at the next of the calls below.
  void put(std::string_view text);
  /// How long the file is with all that was put; what was put since then is taken back, where the
  /// file isn't a pipe that has taken it.
  off_t position() const;
  void go_back(off_t to);
  void print(const char* format, ...) __attribute__((format(printf, 2, 3)));
  /// Writes out all that was put. Where that fails in a file that has its name already, what was
  /// put since the last success is cut off again, and the file can be written on.
  bool flush();
  /// Flushes, and gives a new file its name. It stays open.
  bool publish();
  /// Publishes and closes. False: something failed, and a new file was dropped.
  bool close();
  /// Closes, and drops what wasn't published.
  void discard();

 private:
  void begin(const std::string& name);
  bool create_under(const std::string& name, bool is_private);
  bool may_be_written(const std::string& target);
  bool make_beside(const std::string& directory, mode_t mode);
  bool open_beside(const std::string& target, std::optional<mode_t> mode);
  bool open_as_it_is(const std::string& name, int flags);
  void write_out();
  void write_all(std::string_view text);
  void take_back();
  bool fail();
  void forget();

  int descriptor_ = -1;
  int number_ = 0;  // among the open files
  std::string name_;
  std::string target_;  // the name after links
  std::string folder_;  // of the target
  std::string beside_;  // where it grows; empty: it has its name
  std::string waiting_;
  bool regular_ = false;
  bool failed_ = false;  // nothing more is written
  off_t length_ = 0;     // with what was written last
  off_t whole_ = 0;      // up to the last success
  std::string fault_;
};

}  // namespace zeb
