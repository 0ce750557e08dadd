// Files that are read: named ones, pipes and the standard input, compressed by gzip or not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "base/open_files.h"

namespace zeb {

/// A file being read from its start to its end, once: nothing of it needs to be a file on a disk.
/// What is compressed by gzip is told by its first bytes and read as what it holds.
class input_file {
 public:
  input_file();
  ~input_file();
  input_file(input_file&&) noexcept;
  input_file& operator=(input_file&&) noexcept;

  /// Opens the file; "-" is the standard input, which can be had once. False: `fault` says why.
  /// `is_data`: the file is noted among those that results may depend on.
  bool open(const std::string& name, bool is_data = true);
  /// Opens a regular file of the user who runs the program, which nobody else can have put there:
  /// no link leads there, and not everybody may write it.
  bool open_own(const std::string& name);
  /// Opens a text of this process under that name.
  bool open_text(const std::string& name, std::string_view text);
  void close();
  bool is_open() const { return descriptor_ >= 0; }
  /// As it is to be shown.
  const std::string& name() const { return name_; }
  /// What went wrong at last, in words; empty: nothing.
  const std::string& fault() const { return fault_; }
  /// The same to stand after the name in a message: " (it is a directory)".
  std::string cause() const { return cause_text(fault_); }

  /// Takes up to `bytes`: fewer at the end of the file, and where reading fails, which leaves a
  /// `fault`.
  std::size_t read(char* to, std::size_t bytes);
  /// The next byte; -1 at the end and where reading fails.
  int get();
  /// The byte `ahead` places on, left unread; -1 as above.
  int peek(std::size_t ahead = 0);
  /// Up to so many of the next bytes, left unread.
  std::string_view ahead(std::size_t bytes);
  /// All that is left.
  std::string rest();
  /// Reads from the start again. False for what can be read once only.
  bool rewind();

  bool is_terminal() const { return terminal_; }
  /// No more bytes than this come out of the whole file; -1 where that can't be known.
  std::int64_t most_bytes();

 private:
  struct inflating;
  enum class file_use { data, other, steering };
  bool take(int descriptor, file_use use);
  bool fill();
  bool read_raw(std::string& text);
  void begin();
  void inflate_more();

  int descriptor_ = -1;
  std::string name_;
  int number_ = 0;  // among the open files
  bool terminal_ = false;
  bool begun_ = false;      // the first bytes have been looked at
  bool ended_ = false;      // nothing more can be read
  std::int64_t size_ = -1;  // on the disk
  std::string text_;        // read and not all taken
  std::size_t taken_ = 0;
  std::unique_ptr<inflating> gzip_;  // null: not compressed
  std::string fault_;
};

/// Is the text, or the beginning of one, UTF-16, which nothing here can read?
bool is_utf16(std::string_view text);

}  // namespace zeb
