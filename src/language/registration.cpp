#include "language/registration.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "base/hooks.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "console/hooks.h"
#include "console/screen.h"
#include "console/settings.h"
#include "console/text_buffer.h"
#include "language/commands/memory_command.h"
#include "language/commands/quote_command.h"
#include "language/completion.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/methods.h"
#include "language/name_matching.h"
#include "language/settings_scope.h"
#include "language/unwinding.h"

namespace zeb {

language_hooks hooks_of_language;

namespace {

settings_restorer note_screen() {
  return [rows = screen.rows, columns = screen.columns, cut = screen.cut_lines] {
    resize_screen(rows, columns);
    cut_lines_at_edge(cut);
  };
}

settings_restorer note_watch() {
  return [on = interpreter.watch, ram = interpreter.watch_ram] {
    watch_commands(on);
    watch_ram(ram);
  };
}

settings_restorer note_inputs() {
  return [mxproc = input.mxproc, run_directory = input.run_directory] {
    set_input_depth(mxproc);
    set_run_directory(run_directory);
  };
}

settings_restorer note_working_directory() {
  std::error_code fault;
  return [here = std::filesystem::current_path(fault)] {
    std::error_code ignored;
    if (!here.empty()) std::filesystem::current_path(here, ignored);
  };
}

void register_settings() {
  add_settings(noted<settings>);
  add_settings(noted<memory>);
  add_settings(noted<matching>);
  add_settings(noted<quotes>);
  add_settings(note_screen);
  add_settings(note_watch);
  add_settings(note_inputs);
  add_settings(note_working_directory);
}

std::vector<std::string> language_settings_as_commands() {
  std::vector<std::string> lines;
  if (input.mxproc != input_state{}.mxproc)
    lines.push_back("mxproc " + std::to_string(input.mxproc));
  if (matching.match_mode != 0)
    lines.push_back((matching.match_mode == 1 ? "help >" : "help !") +
                    exact_text(matching.match_threshold));
  if (quotes.literal) lines.push_back("lquote =");
  if (quotes.conversions) lines.push_back("lquote [");
  if (quotes.to_stderr) lines.push_back("lquote >");
  if (display_buffer.kilobytes() != usual_kilobytes)
    lines.push_back("txtsize " + std::to_string(display_buffer.kilobytes()));
  if (!display_buffer.compression()) lines.emplace_back("txtsize -");
  if (settings.status_seconds + settings.status_replications + settings.status_trees > 0)
    lines.push_back(text_of("report +%i/%i/%i", settings.status_seconds,
                            settings.status_replications, settings.status_trees));
  // A path that isn't one word as it stands is left out.
  if (!input.run_directory.empty() &&
      input.run_directory.find_first_of(" ;'\"$#%") == std::string::npos)
    lines.push_back("rdir " + input.run_directory);
  return lines;
}

}  // namespace

void register_language() {
  register_settings();
  add_methods(methods_part::session, language_settings_as_commands);
  hooks_of_base.tell_error = tell_error;
  hooks_of_base.tell_warning = tell_warning;
  hooks_of_base.check_interrupt = look_for_interrupt;
  hooks_of_console.complete = complete_line;
}

}  // namespace zeb
