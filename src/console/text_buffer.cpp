#include "console/text_buffer.h"

#include <unistd.h>

#include <algorithm>
#include <new>

namespace zeb {

text_buffer display_buffer;

namespace {

constexpr char run_code = 1;
constexpr std::size_t longest_run = 125;
constexpr std::uint64_t smallest_capacity = 50000;

// The system grants more memory than it has and kills the process when it is used, so what can't
// fit is refused here.
std::uint64_t physical_memory() {
  return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
         static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

bool text_buffer::allot(int kilobytes) {
  const std::uint64_t capacity = std::max(
      std::uint64_t{1000} * static_cast<std::uint64_t>(std::max(kilobytes, 0)), smallest_capacity);
  const std::uint64_t table = capacity / 10 + 2;
  if (capacity + table * sizeof(std::uint64_t) > physical_memory()) return false;
  // Neither is filled, so that a large buffer takes memory only as it fills.
  std::unique_ptr<char[]> text(new (std::nothrow) char[capacity]);
  std::unique_ptr<std::uint64_t[]> starts(new (std::nothrow) std::uint64_t[table]);
  if (!text || !starts) return false;
  text_ = std::move(text);
  starts_ = std::move(starts);
  table_size_ = table;
  capacity_ = capacity;
  kilobytes_ = static_cast<int>(capacity / 1000);
  forget();
  return true;
}

void text_buffer::forget() {
  oldest_ = finished_ = 0;
  begin_ = last_ = end_ = 0;
  view_offset = 0;
}

void text_buffer::set_compression(bool on) {
  compression_ = on;
  forget();
}

bool text_buffer::add(std::string_view text) {
  if (capacity_ == 0) return true;
  view_offset = 0;
  bool kept = true;
  for (std::size_t i = 0; i < text.size();) {
    const char c = text[i];
    if (c == '\n') {
      kept &= put(0);
      end_line();
    } else if (c == ' ' && compression_) {
      std::size_t run = 1;
      while (run < longest_run && i + run < text.size() && text[i + run] == ' ') ++run;
      kept &= put_run(run);
      i += run;
      continue;
    } else if (c == run_code || c == 0) {
      kept &= put(' ');  // these two bytes have meanings of their own here
    } else if (c != '\r' && c != '\b' && c != '\a') {
      kept &= put(c);
    }
    ++i;
  }
  return kept;
}

bool text_buffer::put(char c) {
  const bool kept = make_room(1);
  text_[end_++ % capacity_] = c;
  return kept;
}

bool text_buffer::put_run(std::size_t blanks) {
  if (blanks == 1) return put(' ');
  const bool kept = make_room(2);
  text_[end_++ % capacity_] = run_code;
  text_[end_++ % capacity_] = static_cast<char>(blanks);
  return kept;
}

// Drops the oldest lines until `bytes` more fit. When the unfinished line alone fills the ring
// there is nothing left to drop but itself.
bool text_buffer::make_room(std::uint64_t bytes) {
  while (end_ - begin_ + bytes > capacity_) {
    if (finished_ == 0) {
      forget();
      return false;
    }
    oldest_ = (oldest_ + 1) % table_size_;
    --finished_;
    begin_ = finished_ > 0 ? starts_[oldest_] : last_;
  }
  return true;
}

void text_buffer::end_line() {
  if (finished_ == table_size_) {
    oldest_ = (oldest_ + 1) % table_size_;
    --finished_;
    begin_ = starts_[oldest_];
  }
  starts_[(oldest_ + finished_) % table_size_] = last_;
  ++finished_;
  last_ = end_;
}

std::size_t text_buffer::lines() const { return finished_ + (end_ > last_ ? 1 : 0); }

std::uint64_t text_buffer::start_of(std::size_t number) const {
  return number < finished_ ? starts_[(oldest_ + number) % table_size_] : last_;
}

std::string text_buffer::line(std::size_t number) const {
  std::string text;
  if (number >= lines()) return text;
  for (std::uint64_t p = start_of(number); p < end_; ++p) {
    const char c = text_[p % capacity_];
    if (c == 0) break;
    if (c == run_code && compression_) {
      text.append(static_cast<std::size_t>(text_[++p % capacity_]), ' ');
    } else {
      text += c;
    }
  }
  return text;
}

std::uint64_t text_buffer::written_bytes() const {
  std::uint64_t bytes = 0;
  for (std::uint64_t p = begin_; p < end_; ++p) {
    if (text_[p % capacity_] == run_code && compression_) {
      bytes += static_cast<std::uint64_t>(text_[++p % capacity_]);
    } else {
      ++bytes;
    }
  }
  return bytes;
}

}  // namespace zeb
