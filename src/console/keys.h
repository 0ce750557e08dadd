// Keys of the console.
#pragma once

namespace zeb {

/// Keys that are no single byte, as `wait_for_key` returns them. <esc> is byte 27, <enter> 10.
enum console_key : int {
  no_key = -1,
  key_up = 1000,
  key_down,
  key_left,
  key_right,
  key_home,
  key_end,
  key_page_up,
  key_page_down,
  key_delete,
  key_backspace,
  key_resize,     // the screen has a new size, already kept in `screen`
  key_interrupt,  // Ctrl-C, as the signal that it is
  key_other,
};
constexpr int escape_key = 27;

}  // namespace zeb
