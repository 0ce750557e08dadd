// Everything the program says goes through one line buffer to the log, the text buffer and the
// console, as the mask allows.
#pragma once

#include <cstdarg>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/errors.h"

namespace zeb {

enum output_place : unsigned { no_log = 1, no_console = 2, no_text_buffer = 4 };

struct output_state {
  unsigned output_mask = 0;                 // bits of output_place: where nothing goes
  bool polling = false;                     // output is looking at the keyboard
  class output_capture* capture = nullptr;  // takes all that is said; null: nobody
};
extern output_state output;

void emit_parts(std::initializer_list<message_part> parts);
void report_line_parts(std::initializer_list<message_part> parts);

// The line buffer takes 2,048 bytes of a line; what is beyond is left out, but never the newline.

/// Appends the parts to the line buffer with nothing between them, and sends it to the outputs.
template <class... part>
void emit(const part&... parts) {
  emit_parts({message_part(parts)...});
}
/// The same with a blank after each part and a newline at the end.
template <class... part>
void report_line(const part&... parts) {
  report_line_parts({message_part(parts)...});
}
/// Formats at most 10,000 characters, then as `report_line` with that one part.
void emitf(const char* format, ...) __attribute__((format(printf, 1, 2)));
/// Emits " \n".
void newline();
/// Sends the line buffer to the outputs and empties it.
void flush_line();
/// Empties the line buffer without sending: what an error or interrupt does first.
void reset_output();
/// Brings the view of the text buffer to its end.
void view_to_end();
/// Switches places off and on again, as `silent` does.
void close_places(unsigned places);
void open_places(unsigned places);

/// For its lifetime nothing goes to the places of the mask, and all else is open.
class output_mask_scope {
 public:
  explicit output_mask_scope(unsigned mask) : saved_(output.output_mask) {
    output.output_mask = mask;
  }
  ~output_mask_scope() { output.output_mask = saved_; }
  output_mask_scope(const output_mask_scope&) = delete;
  output_mask_scope& operator=(const output_mask_scope&) = delete;

 private:
  unsigned saved_;
};

/// What was said while the outputs were as told.
struct captured_piece {
  unsigned mask = 0;  // bits of output_place: where it wouldn't have gone
  std::string text;
  bool is_warning = false;
};

/// For its lifetime all that is said is kept as a text, and goes nowhere else.
class output_capture {
 public:
  output_capture();
  ~output_capture();
  output_capture(const output_capture&) = delete;
  output_capture& operator=(const output_capture&) = delete;
  std::string text() const;
  const std::vector<captured_piece>& pieces() const { return pieces_; }
  /// Keeps a warning, for who can ask the user.
  void add_warning(const std::string& message);

 private:
  friend void flush_line();
  std::vector<captured_piece> pieces_;
  output_capture* outer_;
};

/// For its lifetime nothing goes to these places either; by default to none.
class silence_scope : public output_mask_scope {
 public:
  explicit silence_scope(unsigned places = no_log | no_console | no_text_buffer)
      : output_mask_scope(output.output_mask | places) {}
};

}  // namespace zeb
