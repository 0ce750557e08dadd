// One command that runs others: a string frame, with the console silenced.
#include "shell/arena.h"
#include "shell/errors.h"
#include "shell/input.h"
#include "shell/interpreter.h"
#include "shell/lexer.h"
#include "shell/output.h"
#include "shell/process.h"

namespace zeb {
namespace {

int depth = 0;

// Puts the state of the calling command back, also where an error passes through.
class nested_run {
 public:
  nested_run() : saved_(command), start_(process.command_start) { ++depth; }
  ~nested_run() {
    --depth;
    command = saved_;
    process.command_start = start_;
  }
  nested_run(const nested_run&) = delete;
  nested_run& operator=(const nested_run&) = delete;

 private:
  command_state saved_;
  double start_;
};

void check_room(const std::string& text) {
  if (input.top >= input.mxproc) {
    error_end_f(
        "Can't run this command with %i open files\nYou may increase \"mxproc\" and try again",
        input.mxproc);
  }
  if (text.size() >= frame_text_size) {
    error_end_f("Sorry, instructions are too long (%i bytes; max. is %i)",
                static_cast<int>(text.size()), frame_text_size);
  }
}

// False where the string has ended.
bool reach_command(int level) {
  while (has_text_at(level)) {
    const int c = read_char();
    if (c < 33 || c == ';') continue;
    unread_char();
    return true;
  }
  return false;
}

void run_next() {
  if (read_word() == 0) {
    error_end_f("Found '%c' when expecting a command", skip_blanks_peek());
  }
  const command_row* row = find_command(token());
  if (!row) error_end("Unknown command:", token());
  if (!row->handler) {
    error_end(text_of("Command \"%s\" is not available yet", row->name));
  }
  command.command_name = row->name;
  row->handler();
}

}  // namespace

int command_string_depth() { return depth; }

void run_command_string(const std::string& text) {
  check_room(text);
  const nested_run nested;
  const output_mask_scope silent(no_log | no_console | no_text_buffer);
  push_string(text, "search commands");
  const int level = input.top;
  process.interrupt_state = 0;
  while (reach_command(level)) {
    run_next();
    end_of_command();
    check_interrupt(1);
    if (process.interrupt_state == 3) process.interrupt_state = 0;
    if (process.interrupt_state != 0) break;
  }
  while (input.top >= level) pop_frame();
}

}  // namespace zeb
