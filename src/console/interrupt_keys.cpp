// What a single key means to a running command.
#include <cctype>

#include "base/process.h"
#include "console/console.h"
#include "console/output.h"

namespace zeb {
namespace {

constexpr std::string_view pause_text = "\rProgram is paused... press <enter> to continue...     ";

// The seconds that the user takes aren't the command's.
class stopped_clock {
 public:
  stopped_clock() : since_(wall_clock()) {}
  ~stopped_clock() { process.command_start += wall_clock() - since_; }
  stopped_clock(const stopped_clock&) = delete;
  stopped_clock& operator=(const stopped_clock&) = delete;

 private:
  double since_;
};

bool answered_yes(std::string_view question) {
  const stopped_clock clock;
  return ask_key(question, "yn") == 'y';
}

key_wish pause_command() {
  const stopped_clock clock;
  while (poll_key() != no_key) {
  }
  write_terminal(pause_text);
  const int key = wait_for_key();
  for (std::size_t i = 1; i < pause_text.size(); ++i) write_terminal("\b \b");
  output.cursor_column = 0;
  return key == escape_key ? key_wish::interrupt : key_wish::nothing;
}

}  // namespace

key_wish wish_of_key(int key) {
  if (key == escape_key) {
    if (console.break_text.empty()) return key_wish::interrupt;
    return answered_yes("\n\n\r" + console.break_text + " (y/n)\n\n\r") ? key_wish::interrupt
                                                                        : key_wish::nothing;
  }
  if (key < 0 || key > 127) return key_wish::nothing;
  switch (std::tolower(key)) {
    case 'm':
      if (!process.in_search) return key_wish::nothing;
      return answered_yes(
                 "\n\n\rAre you sure you want to stop current search and move on? (y/n)\n\n\r")
                 ? key_wish::end_search
                 : key_wish::nothing;
    case 'p':
      return pause_command();
    default:
      return key_wish::nothing;
  }
}

}  // namespace zeb
