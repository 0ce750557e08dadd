#include "macro/macro_language.h"
#include "macro/variables.h"

#include <algorithm>
#include <string>

#include "base/command.h"
#include "base/errors.h"
#include "base/message_text.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/bodies.h"
#include "macro/jumps.h"
#include "macro/macro_reader.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_files.h"
#include "macro/script_text.h"

namespace zeb {

namespace {

// ---- inputs that begin and end ----

void frame_pushed() {
  macro_frame frame;
  const macro_frame& caller = macros.frames.back();
  frame.shift = std::max(caller.shift, next_free_variable()) + caller.private_count;
  if (frame.shift > macros.max_variables) frame.shift = macros.max_variables;
  frame.bodies_at_entry = open_bodies();
  frame.named_count = macros.named_count;
  frame.heap_top = macros.heap_top;
  macros.frames.push_back(frame);
}

// What was being read when a file was called is kept apart, since the file's own expansions use the
// same buffer.
void frame_about_to_be_pushed() { macros.frames.back().pending_text = take_expansion(); }

void frame_popped() {
  if (macros.frames.size() < 2) return;
  const macro_frame frame = macros.frames.back();
  macros.frames.pop_back();
  // Bodies of the file end with it, then its names, unless `return =` keeps them.
  leave_bodies(frame.bodies_at_entry);
  if (!frame.keep_names) {
    remove_names(frame.shift);
    if (macros.named_count <= frame.named_count)
      macros.heap_top = std::min(macros.heap_top, frame.heap_top);
  }
  macro_frame& caller = macros.frames.back();
  forget_expansion();
  if (!caller.pending_text.empty()) {
    const std::string pending = caller.pending_text;
    caller.pending_text.clear();
    insert_text(pending);
  }
}

}  // namespace

bool leave_all_bodies() {
  const bool in_body = open_bodies() > macros.frames.back().bodies_at_entry;
  for (std::size_t f = 0; f < macros.frames.size(); ++f) {
    macro_frame& frame = macros.frames[f];
    frame.pending_text.clear();
    const bool top = f + 1 == macros.frames.size();
    const int open = top ? open_bodies() : macros.frames[f + 1].bodies_at_entry;
    if (open > frame.bodies_at_entry)
      read_on_at(macros.bodies[static_cast<std::size_t>(frame.bodies_at_entry)].resume,
                 static_cast<int>(f));
  }
  leave_bodies(0);
  for (macro_frame& frame : macros.frames) {
    frame.bodies_at_entry = 0;
    frame.heap_top = std::min(frame.heap_top, macros.heap_top);
  }
  return in_body;
}

namespace {

// ---- errors ----

// After an error or interrupt: closes the files of `hifile`, forgets pending expansions, and leaves
// what is open. True if the reader now stands after a loop.
bool reset_macro_flow() {
  if (!macros_on()) return false;
  reset_script_text();
  close_script_files();
  return leave_all_bodies();
}

// Where the script stood when an error ended it: the line of the loop or of the file, and the text
// there.
error_place script_place() {
  error_place place;
  const std::string body = place_in_body(outer_position());
  if (!body.empty()) place.lines.push_back(body);
  const input_frame& frame = top_frame();
  if (frame.file.is_open() && !frame.is_terminal && input.top > 0) {
    place.lines.push_back(
        text_of("Error reading line %i of %s", frame.line_number + 1, frame.name));
  }
  show_around(place, body.empty() ? start_of_shown_text(frame) : macros.bodies.back().text,
              outer_position());
  return place;
}

// "proc/;" among the commands for a file of `forfiles`.
bool end_file_item() {
  if (!reach_if_open(body_kind::files)) return false;
  skip_to_body_end();
  return true;
}

void connect() {
  set_macro_layer({.read_char = macro_read_char,
                   .unread_char = unread_raw_char,
                   .read_unexpanded = read_raw_char,
                   .read_value = macro_read_value,
                   .number_of_word = macro_list_word,
                   .outer_position = outer_position,
                   .frame_about_to_be_pushed = frame_about_to_be_pushed,
                   .frame_pushed = frame_pushed,
                   .frame_popped = frame_popped,
                   .command_failed = reset_macro_flow,
                   .place = script_place,
                   .end_item = end_file_item,
                   .loop_level = [] { return open_bodies(); },
                   .run_pending_jump = run_error_target});
  reset_script_text();
}

void disconnect() {
  reset_script_text();
  set_macro_layer({});
}

}  // namespace

void start_macros() {
  allocate_macro_tables();
  connect();
}

void stop_macros() {
  if (open_bodies() > 0) error_end("Can't disconnect macros from within a loop!");
  disconnect();
  close_script_files();
  free_macro_tables();
}

void require_macros() {
  if (!macros_on()) error_end(command.command_name, "legal only when macros are enabled");
}

}  // namespace zeb
