// The plain program: no screen library.
#include "shell/console.h"

#include <poll.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>

#include "shell/process.h"

namespace zeb {

console_settings console;

void start_console() {}
void end_console() {}
bool read_console_line(char*, int) { return false; }

bool user_present() { return !process.background && isatty(STDIN_FILENO) && isatty(STDERR_FILENO); }

int wait_for_key() {
  if (!user_present()) return escape_key;
  const int c = std::getchar();
  return c == EOF ? escape_key : c;
}

int poll_key() {
  if (!user_present()) return no_key;
  pollfd descriptor{STDIN_FILENO, POLLIN, 0};
  if (poll(&descriptor, 1, 0) <= 0) return no_key;
  unsigned char c = 0;
  return read(STDIN_FILENO, &c, 1) == 1 ? c : static_cast<int>(no_key);
}

int ask_key(std::string_view question, std::string_view answers) {
  if (!user_present()) return escape_key;
  write_console(question);
  for (;;) {
    const int key = std::tolower(wait_for_key());
    if (key == escape_key || answers.find(static_cast<char>(key)) != answers.npos) return key;
  }
}

key_wish poll_interrupt_keys() {
  return poll_key() == escape_key ? key_wish::interrupt : key_wish::nothing;
}

key_wish wait_interrupt_key() {
  return user_present() && wait_for_key() == escape_key ? key_wish::interrupt : key_wish::nothing;
}

void write_console(std::string_view text) {
  if (!process.background) std::fwrite(text.data(), 1, text.size(), stderr);
}

void ring_bell() {
  if (user_present()) std::fputc('\a', stderr);
}

void clear_screen() {}

}  // namespace zeb
