#include "console/log.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/safe_mode.h"
#include "console/console.h"
#include "console/screen.h"

namespace zeb {

log_state log_file;

namespace {

constexpr std::size_t log_buffer_size = 2046;
constexpr std::size_t longest_file_name = 159;

// As the console needs its lines where the log is the same terminal.
void end_lines_for_screen(std::string& text) {
  if (log_file.stream != stdout || !screen.up || !isatty(STDOUT_FILENO)) return;
  hide_progress();
  for (std::size_t at = text.find('\n'); at != text.npos; at = text.find('\n', at + 1)) {
    text.insert(++at, 1, '\r');
  }
}

// A log that can't be written (disk full, file system gone) is closed and the user told, once.
void write_out() {
  if (log_file.waiting.empty() || !log_file.stream) return;
  end_lines_for_screen(log_file.waiting);
  const bool written = std::fwrite(log_file.waiting.data(), 1, log_file.waiting.size(),
                                   log_file.stream) == log_file.waiting.size() &&
                       std::fflush(log_file.stream) == 0;
  log_file.waiting.clear();
  if (written) return;
  const std::string reason = std::strerror(errno);  // NOLINT(concurrency-mt-unsafe)
  const std::string name = log_file.name;
  close_log();
  write_console("Cannot write to log file " + name + " (" + reason + "): log closed\n");
}

}  // namespace

bool open_log(const std::string& name, bool append) {
  close_log();
  if (name == "stdout") {
    log_file.stream = stdout;
  } else if (name.size() <= longest_file_name && refusal_of_writing(name).empty()) {
    log_file.stream = std::fopen(name.c_str(), append ? "ab" : "wb");
    if (log_file.stream) note_written_file(name);
  }
  if (log_file.stream) log_file.name = name;
  return log_file.stream != nullptr;
}

void write_log(std::string_view text) {
  if (!log_file.stream) return;
  while (!text.empty() && log_file.stream) {
    if (log_file.waiting.size() == log_buffer_size) write_out();
    const std::string_view piece = text.substr(0, log_buffer_size - log_file.waiting.size());
    log_file.waiting += piece;
    text.remove_prefix(piece.size());
  }
}

void flush_log() { write_out(); }

void close_log() {
  if (!log_file.stream) return;
  std::FILE* const stream = log_file.stream;
  if (!log_file.waiting.empty()) {
    end_lines_for_screen(log_file.waiting);
    std::fwrite(log_file.waiting.data(), 1, log_file.waiting.size(), stream);
    std::fflush(stream);
    log_file.waiting.clear();
  }
  if (stream != stdout) std::fclose(stream);
  log_file.stream = nullptr;
  log_file.name.clear();
}

}  // namespace zeb
