#include "console/plain_line.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "base/command.h"
#include "base/file_calls.h"
#include "base/interrupts.h"
#include "base/process.h"
#include "base/signals.h"

namespace zeb {
namespace {

constexpr std::size_t read_at_a_time = 4096;
constexpr int look_milliseconds = 250;  // for a signal that comes just before the wait begins

struct plain_input {
  std::string waiting;  // read and not yet taken
  bool ended = false;
};
plain_input plain;

void wait_for_text() {
  pollfd descriptor{STDIN_FILENO, POLLIN, 0};
  do {
    if (noted_signal() == 0) continue;
    plain.waiting.clear();  // the line that was being typed goes, as it does at the console
    check_interrupt();
  } while (poll(&descriptor, 1, look_milliseconds) <= 0);
}

void read_more() {
  wait_for_text();
  char piece[read_at_a_time];
  plain.waiting.reserve(plain.waiting.size() + sizeof piece);  // what is read can't be lost
  const ssize_t n = call_read(STDIN_FILENO, piece, sizeof piece);
  if (n > 0) {
    plain.waiting.append(piece, static_cast<std::size_t>(n));
  } else {
    if (n < 0) note_loss("Cannot read the standard input (" + last_cause() + ")");
    plain.ended = true;
  }
}

}  // namespace

std::size_t read_plain_line(char* text, std::size_t most) {
  std::fputc('\n', stderr);
  std::fputs(command.prompt.c_str(), stderr);
  std::fflush(stderr);
  std::size_t newline = plain.waiting.find('\n');
  while (newline == std::string::npos && plain.waiting.size() < most && !plain.ended) {
    const std::size_t searched = plain.waiting.size();
    read_more();
    newline = plain.waiting.find('\n', std::min(searched, plain.waiting.size()));
  }
  const std::size_t n =
      plain.waiting.copy(text, std::min(newline == std::string::npos ? most : newline + 1, most));
  plain.waiting.erase(0, n);
  return n;
}

}  // namespace zeb
