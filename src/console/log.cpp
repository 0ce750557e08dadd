#include "console/log.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "base/files_read.h"
#include "base/open_files.h"
#include "base/process.h"
#include "console/console.h"
#include "console/screen.h"

namespace zeb {

log_state log_file;

namespace {

constexpr std::size_t log_buffer_size = 2046;
constexpr std::size_t longest_file_name = 159;

// As the console needs its lines where the log is the same terminal.
void end_lines_for_screen(std::string& text) {
  if (log_file.name != "stdout" || !screen.up || !isatty(STDOUT_FILENO)) return;
  hide_progress();
  for (std::size_t at = text.find('\n'); at != text.npos; at = text.find('\n', at + 1)) {
    text.insert(++at, 1, '\r');
  }
}

// A log that can't be written (disk full, file system gone) is closed and the user told, once. The
// log is all that a run in the background has: it doesn't go on without.
void lose_log() {
  constexpr int status_of_failure = 255;
  const std::string text =
      "Cannot write to log file " + log_file.name + log_file.file.cause() + ": log closed\n";
  log_file.file.discard();
  log_file.waiting.clear();
  log_file.name.clear();
  note_failure();
  if (!process.background) return write_console(text);
  std::fputs(text.c_str(), stderr);
  end_process(status_of_failure);
}

void hand_over() {
  end_lines_for_screen(log_file.waiting);
  log_file.file.put(log_file.waiting);
  log_file.waiting.clear();
}

void write_out() {
  hand_over();
  if (!log_file.file.flush()) lose_log();
}

// The same for each way to write it.
std::string path_of(const std::string& name) {
  std::error_code ignored;
  return std::filesystem::weakly_canonical(name, ignored).string();
}

}  // namespace

bool was_input_file(const std::string& name) {
  struct stat status;
  if (stat(name.c_str(), &status) != 0 || find_open_file(name, false)) return false;
  if (log_file.former.contains(path_of(name))) return false;
  return std::ranges::any_of(files_read.files, [&](const file_read& file) {
    return file.status.st_dev == status.st_dev && file.status.st_ino == status.st_ino;
  });
}

bool open_log(const std::string& name, bool append) {
  close_log();
  if (name.size() > longest_file_name) return false;
  const bool opened = name == "stdout" ? log_file.file.create("/dev/stdout")
                      : append         ? log_file.file.append(name)
                                       : log_file.file.create(name);
  if (!opened) return false;
  log_file.former.insert(path_of(name));
  log_file.name = name;
  log_file.fresh = true;
  return true;
}

void write_log(std::string_view text) {
  while (!text.empty() && log_is_open()) {
    if (log_file.waiting.size() == log_buffer_size) write_out();
    const std::string_view piece = text.substr(0, log_buffer_size - log_file.waiting.size());
    log_file.waiting += piece;
    text.remove_prefix(piece.size());
  }
}

void flush_log() {
  if (!log_is_open()) return;
  if (log_file.fresh) {
    log_file.fresh = false;
    return write_out();
  }
  hand_over();
  if (!log_file.file.publish()) lose_log();
}

void close_log() {
  if (!log_is_open()) return;
  hand_over();
  if (!log_file.file.close()) return lose_log();
  log_file.name.clear();
}

}  // namespace zeb
