#include "console/interrupt_keys.h"

#include <cctype>
#include <string>
#include <string_view>
#include <vector>

#include "base/command.h"
#include "base/interrupts.h"
#include "console/console.h"
#include "console/keys.h"
#include "console/screen.h"
#include "console/settings.h"

namespace zeb {
namespace {

constexpr std::string_view pause_text = "\rProgram is paused... press <enter> to continue...     ";

bool answered_yes(std::string_view question) {
  const stopped_clock_scope clock;
  return ask_key(question, "yn") == 'y';
}

key_wish pause() {
  const stopped_clock_scope clock;
  while (poll_key() != no_key) {
  }
  hide_progress();  // waiting would wipe the line, and the text with it
  write_terminal(pause_text);
  const int key = wait_for_key();
  for (std::size_t i = 1; i < pause_text.size(); ++i) write_terminal("\b \b");
  begin_line();
  return key == escape_key ? key_wish::interrupt : key_wish::nothing;
}

key_wish wish_of_key(int key) {
  if (key == escape_key) {
    if (settings.break_text.empty()) return key_wish::interrupt;
    return answered_yes("\n\n\r" + settings.break_text + " (y/n)\n\n\r") ? key_wish::interrupt
                                                                         : key_wish::nothing;
  }
  if (key < 0 || key > 127) return key_wish::nothing;
  switch (std::tolower(key)) {
    case 'm':
      if (!interrupts.in_search) return key_wish::nothing;
      return answered_yes(
                 "\n\n\rAre you sure you want to stop current search and move on? (y/n)\n\n\r")
                 ? key_wish::end_search
                 : key_wish::nothing;
    case 'p':
      return pause();
    default:
      return key_wish::nothing;
  }
}

// A burst of keys between two looks is text typed ahead, kept for the line editor, unless <esc> is
// in it; a single key is a word to the running command.
key_wish wish_of_keys(bool dot_interrupts) {
  const std::vector<int> keys = keys_pressed();
  if (keys.empty()) return key_wish::nothing;
  if (keys.back() == escape_key) {
    forget_typed_ahead();
    return wish_of_key(escape_key);
  }
  const bool enter_follows = keys.size() == 2 && (keys[1] == '\n' || keys[1] == '\r');
  if (keys.size() == 1 || enter_follows)
    return dot_interrupts && keys[0] == '.' ? key_wish::interrupt : wish_of_key(keys[0]);
  keep_typed_ahead(keys);
  return key_wish::nothing;
}

}  // namespace

key_wish poll_interrupt_keys() { return wish_of_keys(false); }
key_wish poll_waiting_keys() { return wish_of_keys(true); }

key_wish wait_interrupt_key() {
  if (!user_present()) return key_wish::nothing;
  return wait_for_key() == escape_key ? key_wish::interrupt : key_wish::nothing;
}

}  // namespace zeb
