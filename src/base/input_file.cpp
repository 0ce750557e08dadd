#include "base/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/file_calls.h"
#include "base/files_read.h"
#include "base/open_files.h"
#include "base/safe_mode.h"

namespace zeb {

namespace {

constexpr std::size_t piece_size = 65536;
constexpr std::string_view gzip_mark = "\x1f\x8b";
constexpr int no_descriptor = -1;
constexpr int any_gzip_window = 15 + 16;
constexpr std::int64_t most_expansion = 1032;  // bytes that a compressed byte can stand for

// Nobody else can have written it, or given it a second name.
bool is_private(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_uid == geteuid() && status.st_nlink == 1 &&
         (status.st_mode & S_IWOTH) == 0;
}

}  // namespace

/// The state of decompression. Its address must not change.
struct input_file::inflating {
  z_stream stream{};
  std::string raw;
  bool member_ended = false;  // a whole member has been read; another may follow
  bool more_inside = false;   // there wasn't room for all that was inflated

  inflating() {
    if (inflateInit2(&stream, any_gzip_window) != Z_OK) throw std::bad_alloc();
  }
  ~inflating() { inflateEnd(&stream); }
  inflating(const inflating&) = delete;
  inflating& operator=(const inflating&) = delete;

  bool has_more() const { return more_inside || stream.avail_in > 0; }
  void feed() {
    stream.next_in = reinterpret_cast<unsigned char*>(raw.data());
    stream.avail_in = static_cast<unsigned>(raw.size());
  }
};

input_file::input_file() = default;
input_file::~input_file() { close(); }

input_file::input_file(input_file&& other) noexcept { *this = std::move(other); }

input_file& input_file::operator=(input_file&& other) noexcept {
  if (this == &other) return *this;
  close();
  descriptor_ = std::exchange(other.descriptor_, -1);
  name_ = std::move(other.name_);
  number_ = std::exchange(other.number_, 0);
  terminal_ = other.terminal_;
  begun_ = other.begun_;
  ended_ = other.ended_;
  size_ = other.size_;
  text_ = std::move(other.text_);
  taken_ = other.taken_;
  gzip_ = std::move(other.gzip_);
  fault_ = std::move(other.fault_);
  return *this;
}

bool input_file::open(const std::string& name, bool is_data) {
  close();
  fault_ = refusal_of_reading(name);
  if (!fault_.empty()) return false;
  name_ = name == "-" ? "standard input" : name;
  if (name == "-" && !take_standard_input()) {
    fault_ = "it has been read";
    return false;
  }
  return take(name == "-" ? STDIN_FILENO : call_open(name, O_RDONLY | O_CLOEXEC | O_NOCTTY),
              is_data ? file_use::data : file_use::other);
}

bool input_file::open_own(const std::string& name) {
  close();
  fault_.clear();
  name_ = name;
  return take(call_open(name, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK),
              file_use::steering);
}

bool input_file::open_text(const std::string& name, std::string_view text) {
  close();
  fault_.clear();
  name_ = name;
  std::FILE* const file = std::tmpfile();
  const bool written = file && std::fwrite(text.data(), 1, text.size(), file) == text.size() &&
                       std::fflush(file) == 0;
  const int descriptor =
      written ? fcntl(fileno(file), F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : no_descriptor;
  if (file) std::fclose(file);
  if (descriptor != no_descriptor) lseek(descriptor, 0, SEEK_SET);
  return take(descriptor, file_use::other);
}

bool input_file::take(int descriptor, file_use use) {
  struct stat status;
  if (descriptor < 0 || fstat(descriptor, &status) != 0) {
    fault_ = last_cause();
  } else if (S_ISDIR(status.st_mode)) {
    fault_ = "it is a directory";
  } else if (use == file_use::steering && !is_private(status)) {
    fault_ = "it isn't a file of yours alone";
  } else {
    descriptor_ = descriptor;
    number_ = note_open_file(name_, false, status);
    if (use == file_use::data) note_file_read(name_, descriptor, status);
    terminal_ = isatty(descriptor) != 0;
    size_ = S_ISREG(status.st_mode) ? status.st_size : -1;
    return true;
  }
  if (descriptor > STDIN_FILENO) call_close(descriptor);
  return false;
}

void input_file::close() {
  if (descriptor_ > STDIN_FILENO) call_close(descriptor_);
  forget_open_file(number_);
  descriptor_ = -1;
  number_ = 0;
  begun_ = ended_ = false;
  text_.clear();
  taken_ = 0;
  gzip_.reset();
}

// Appends what one call gives; false at the end and at a failure, after which nothing is read.
bool input_file::read_raw(std::string& text) {
  const std::size_t former = text.size();
  text.resize(former + piece_size);
  const ssize_t n = ended_ ? 0 : call_read(descriptor_, text.data() + former, piece_size);
  text.resize(former + static_cast<std::size_t>(std::max<ssize_t>(n, 0)));
  if (n < 0) fault_ = last_cause();
  if (n <= 0) ended_ = true;
  return n > 0;
}

void input_file::begin() {
  begun_ = true;
  while (text_.size() < gzip_mark.size() && read_raw(text_)) continue;
  if (!text_.starts_with(gzip_mark)) return;
  gzip_ = std::make_unique<inflating>();
  gzip_->raw.swap(text_);
  gzip_->feed();
}

// A file may hold several compressed members, one after the other, and zeros after the last, as
// tapes and block-wise compression leave them.
void input_file::inflate_more() {
  inflating& gzip = *gzip_;
  z_stream& stream = gzip.stream;
  if (stream.avail_in == 0 && !gzip.more_inside) {
    gzip.raw.clear();
    if (!read_raw(gzip.raw)) {
      if (fault_.empty() && !gzip.member_ended) fault_ = "its gzip data end early";
      return;
    }
    gzip.feed();
  }
  if (gzip.member_ended) {
    while (stream.avail_in > 0 && *stream.next_in == 0) ++stream.next_in, --stream.avail_in;
    if (stream.avail_in == 0) return;
    gzip.member_ended = false;
    inflateReset(&stream);
  }
  const std::size_t former = text_.size();
  text_.resize(former + piece_size);
  stream.next_out = reinterpret_cast<unsigned char*>(text_.data() + former);
  stream.avail_out = static_cast<unsigned>(piece_size);
  const int result = inflate(&stream, Z_NO_FLUSH);
  text_.resize(text_.size() - stream.avail_out);
  gzip.more_inside = result == Z_OK && stream.avail_out == 0;
  if (result == Z_STREAM_END) {
    gzip.member_ended = true;
  } else if (result != Z_OK && result != Z_BUF_ERROR) {
    fault_ = "its gzip data are damaged";
    ended_ = true;
    stream.avail_in = 0;
  }
}

// Brings more bytes into the text. False where there are none.
bool input_file::fill() {
  if (!is_open()) return false;
  text_.erase(0, taken_);
  taken_ = 0;
  const std::size_t former = text_.size();
  if (!begun_) begin();
  if (!gzip_) return text_.size() > former || read_raw(text_);
  while (text_.size() == former && (!ended_ || gzip_->has_more())) inflate_more();
  return text_.size() > former;
}

std::size_t input_file::read(char* to, std::size_t bytes) {
  std::size_t n = 0;
  while (n < bytes && (taken_ < text_.size() || fill())) {
    const std::size_t piece = std::min(bytes - n, text_.size() - taken_);
    std::memcpy(to + n, text_.data() + taken_, piece);
    taken_ += piece;
    n += piece;
  }
  return n;
}

int input_file::get() {
  const int c = peek();
  if (c >= 0) ++taken_;
  return c;
}

int input_file::peek(std::size_t ahead) {
  while (text_.size() - taken_ <= ahead) {
    if (!fill()) return -1;
  }
  return static_cast<unsigned char>(text_[taken_ + ahead]);
}

std::string_view input_file::ahead(std::size_t bytes) {
  while (text_.size() - taken_ < bytes && fill()) continue;
  return std::string_view(text_).substr(taken_, bytes);
}

std::string input_file::rest() {
  while (fill()) continue;
  std::string all = std::move(text_);
  all.erase(0, taken_);
  text_.clear();
  taken_ = 0;
  return all;
}

bool input_file::rewind() {
  if (!is_open() || lseek(descriptor_, 0, SEEK_SET) != 0) return false;
  begun_ = ended_ = false;
  text_.clear();
  taken_ = 0;
  gzip_.reset();
  fault_.clear();
  return true;
}

std::int64_t input_file::most_bytes() {
  if (size_ < 0) return -1;
  if (!begun_) peek();
  return gzip_ ? size_ * most_expansion : size_;
}

bool is_utf16(std::string_view text) {
  if (text.starts_with("\xff\xfe") || text.starts_with("\xfe\xff")) return true;
  // Without a mark: plain letters, each beside a byte of 0.
  constexpr std::size_t looked_at = 16;
  if (text.size() < looked_at) return false;
  for (const std::size_t zero : {0U, 1U}) {
    bool all = true;
    for (std::size_t i = 0; i < looked_at; i += 2) {
      const auto letter = static_cast<unsigned char>(text[i + 1 - zero]);
      all = all && text[i + zero] == 0 && letter < 128 && (letter >= 32 || std::isspace(letter));
    }
    if (all) return true;
  }
  return false;
}

}  // namespace zeb
