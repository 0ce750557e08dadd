#include "language/unwinding.h"

#include <algorithm>
#include <csignal>
#include <cstdio>

#include "base/command.h"
#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "base/signals.h"
#include "console/console.h"
#include "console/interrupt_keys.h"
#include "console/log.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/screen.h"
#include "console/settings.h"
#include "language/fit_text.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/main_loop.h"
#include "language/steering.h"

namespace zeb {
namespace {

// Text that isn't typed: a file, or a standard input that isn't a terminal.
bool is_file_read(const input_frame& frame) {
  if (frame.is_terminal) return false;
  return input.top == 0 ? !input.from_arguments : frame.file.is_open();
}

error_place place_of_input() {
  error_place place;
  const input_frame& frame = top_frame();
  if (process.batch && input.top == 0) return place;  // nothing is read there
  if (is_file_read(frame)) {
    place.lines.push_back(std::string("Error reading ") + frame.name);
  }
  show_around(place, start_of_shown_text(frame), input.read_position);
  return place;
}

void end_background_run(const std::string& why) {
  flush_log();
  if (process.ended_by != 0 || process.gave_up) return;  // soon, and with what was found saved
  if (process.slave) return hooks_of_language.task_failed(why);
  // The label that was set for errors is where the run goes on.
  if (process.background && !input.jump_pending) {
    report_line("... SOME ERROR OCCURED, QUITTING...");
    if (process.memory_refused) return give_up_process("Not enough memory to go on");
    end_process(255);
  }
  if (!process.batch) return;
  note_failure();
  if (input.jump_pending) return;
  if (process.memory_refused) return give_up_process("Not enough memory to go on");
  leave_program();
}

// A background run shows nothing and asks nobody: without a log its error would be lost. A task
// tells it to its parent.
void tell_without_log(std::string message) {
  if (!process.background || process.slave || log_is_open()) return;
  std::replace(message.begin(), message.end(), '\n', ' ');
  std::fprintf(stderr, "zeb: %s\n", message.c_str());
}

void leave_command() {
  flush_log();
  if (in_jump_context()) return;
  report_line("No jump buffer");
  end_process(255);
}

// Pops all input and unwinds, or asks the search to stop.
void interrupt() {
  reset_output();
  clear_progress();
  if (!interrupts.in_search) emit("\nUser interrupt...\n");
  pop_all();
  if (interrupts.in_search) return stop_search(stop_reason::user);
  if (process.slave) throw_to_jump_context();  // the task goes to its `return`
  if (process.ended_by != 0 || !take_up_execute_file()) end_background_run("User interrupt");
  leave_command();
  throw_to_jump_context();
}

// Ctrl-C at the console is another <esc>. All other signals, and that one where nobody would give
// the next command, end the program after the command.
void obey_signal() {
  forget_typed_ahead();
  const bool at_console =
      user_present() || (input.frames[0]->is_terminal && !process.background && !process.batch);
  if (!take_interrupt_signal()) {
    end_by_signal(noted_signal());
    forget_signal();
  } else if (!at_console) {
    end_by_signal(SIGINT);
  }
  interrupt();
}

void obey(key_wish wish) {
  if (wish == key_wish::interrupt) interrupt();
  if (wish == key_wish::end_search) stop_search(stop_reason::user);
}

}  // namespace

void tell_error(const std::string& text) {
  const std::string message = without_controls(text);
  plain_reading_again();
  reset_output();
  command_is_over();
  no_timing();
  {
    const output_mask_scope everywhere(0);
    const errors_apart_scope apart;
    if (settings.beep) ring_bell();
    if (!input.frames.empty()) {
      const auto place_of_script = hooks_of_language.macros.place;
      emit_place(place_of_script ? place_of_script() : place_of_input());
    }
    emit(message, "\n");
  }
  tell_without_log(message);
  pop_all();
  end_background_run(message);
  leave_command();
}

void tell_warning(const std::string& text) {
  const std::string message = without_controls(text);
  if (!settings.warn || !user_present()) {
    const output_mask_scope shown(output.output_mask & ~static_cast<unsigned>(no_console));
    const errors_apart_scope apart;
    emit(screen.up ? "\n\r" : "\n");
    emit("WARNING:\n");
    emit(message, "\n");
    return;
  }
  if (settings.beep) ring_bell();
  emit(text_of("WARNING - %s", message.c_str()), "\n");
  if (ask_key("Continue? ", "yn") == 'y') {
    write_console("\r" + std::string(80, ' ') + "\r");
    return;
  }
  interrupt();
  leave_command();
  throw_to_jump_context();
}

void look_for_interrupt(bool wait) {
  // Where nothing can be unwound, as in the greeting, keys and signals wait for the first command.
  if (!in_jump_context()) return;
  if (noted_signal() != 0 && process.ended_by == 0) return obey_signal();
  if (process.background) {
    const auto stop_asked =
        process.slave ? hooks_of_language.stop_asked_by_parent : stop_asked_by_file;
    if (stop_asked()) interrupt();
    return;
  }
  if (!wait && !settings.break_polling) return;
  obey(wait ? wait_interrupt_key() : poll_interrupt_keys());
}

}  // namespace zeb
