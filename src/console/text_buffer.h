// Recent output, kept in memory for the viewer and for `svtxt`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace zeb {

constexpr int usual_kilobytes = 200;  // of room for the display buffer

/// A ring of bytes with a table of line starts. New text pushes out the oldest lines, whole, when
/// the bytes or the table run out. Lines end with a 0 byte; with `compression` a run of 2 to 125
/// blanks is kept as byte 1 and its length.
class text_buffer {
 public:
  /// Makes room for `kilobytes` thousands of characters, at least 50, and drops the contents. False
  /// when there is no memory: then nothing has changed.
  bool allot(int kilobytes);
  /// Adds text; "\n" ends a line. False when one line outgrew the whole buffer and all was dropped.
  bool add(std::string_view text);
  void forget();
  /// Drops the contents.
  void set_compression(bool on);
  bool compression() const { return compression_; }
  int kilobytes() const { return kilobytes_; }
  /// Lines held, the last one perhaps unfinished.
  std::size_t lines() const;
  /// Line 0 is the oldest; as it was added, without its newline.
  std::string line(std::size_t number) const;
  /// Bytes that the lines take when written out.
  std::uint64_t written_bytes() const;

  /// Where the viewer stands: its last line, counted back from the newest; 0 is the end.
  std::size_t view_offset = 0;

 private:
  std::uint64_t start_of(std::size_t number) const;
  bool put(char c);
  bool put_run(std::size_t blanks);
  bool make_room(std::uint64_t bytes);
  void end_line();

  // Positions count every byte ever added; the byte at position p is text_[p % capacity_].
  std::unique_ptr<char[]> text_;
  std::uint64_t capacity_ = 0;
  std::unique_ptr<std::uint64_t[]> starts_;  // the line table: a ring of starts of finished lines
  std::size_t table_size_ = 0;
  std::size_t oldest_ = 0;    // place of the oldest line in the table
  std::size_t finished_ = 0;  // finished lines
  std::uint64_t begin_ = 0;   // position of the oldest line
  std::uint64_t last_ = 0;    // position of the unfinished line
  std::uint64_t end_ = 0;     // position after the last byte
  bool compression_ = true;
  int kilobytes_ = 0;
};

extern text_buffer display_buffer;

}  // namespace zeb
