// The log: a copy of the output in a file.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "console/console.h"
#include "console/output.h"

namespace zeb {
namespace {

constexpr std::size_t log_buffer_size = 2046;
constexpr std::size_t longest_file_name = 159;

std::string log_buffer;

// A log that can't be written (disk full, file system gone) is closed and the user told, once.
void write_out() {
  if (log_buffer.empty() || !output.log_stream) return;
  const bool written = std::fwrite(log_buffer.data(), 1, log_buffer.size(), output.log_stream) ==
                           log_buffer.size() &&
                       std::fflush(output.log_stream) == 0;
  log_buffer.clear();
  if (written) return;
  const std::string reason = std::strerror(errno);  // NOLINT(concurrency-mt-unsafe)
  const std::string name = output.log_name;
  close_log();
  write_console("Cannot write to log file " + name + " (" + reason + "): log closed\n");
}

}  // namespace

bool open_log(const std::string& name, bool append) {
  close_log();
  if (name == "stdout") {
    output.log_stream = stdout;
  } else if (name.size() <= longest_file_name) {
    output.log_stream = std::fopen(name.c_str(), append ? "ab" : "wb");
  }
  if (output.log_stream) output.log_name = name;
  return output.log_stream != nullptr;
}

void write_log(std::string_view text) {
  if (!output.log_stream) return;
  while (!text.empty() && output.log_stream) {
    if (log_buffer.size() == log_buffer_size) write_out();
    const std::string_view piece = text.substr(0, log_buffer_size - log_buffer.size());
    log_buffer += piece;
    text.remove_prefix(piece.size());
  }
}

void flush_log() { write_out(); }

void close_log() {
  if (!output.log_stream) return;
  std::FILE* const stream = output.log_stream;
  if (!log_buffer.empty()) {
    std::fwrite(log_buffer.data(), 1, log_buffer.size(), stream);
    std::fflush(stream);
    log_buffer.clear();
  }
  if (stream != stdout) std::fclose(stream);
  output.log_stream = nullptr;
  output.log_name.clear();
}

}  // namespace zeb
