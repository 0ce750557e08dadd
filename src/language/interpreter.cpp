#include "language/interpreter.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <vector>

#include "base/arena.h"
#include "base/command.h"
#include "base/errors.h"
#include "base/interrupts.h"
#include "base/memory_reserve.h"
#include "base/message_text.h"
#include "base/process.h"
#include "base/safe_mode.h"
#include "base/signals.h"
#include "console/console.h"
#include "console/log.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/commands/commands.h"
#include "language/help.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/name_matching.h"

namespace zeb {

interpreter_state interpreter;

namespace {

struct table_state {
  std::span<const command_row> rows;
  int zzz_index = 0;
  // By first letter, each list in the order of the table: a loop of a script looks its commands up
  // at every round.
  std::array<std::vector<const command_row*>, 26> by_letter;
};
table_state table;

constexpr command_row run_file_row = {"run-file", run_file_command, true, 0};

// Words come folded to lower case, as the names of rows are.
bool matches(std::string_view word, const command_row& row) {
  if (row.whole_word) return word == row.name;
  // By hand: words are short, and scripts look them up at every round.
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (row.name[i] != word[i]) return false;
  }
  return true;
}

// A row that the user means by a word which matches none.
const command_row* ask_for_command(std::string_view word) {
  if (matching.match_mode == 0 || !top_frame().is_terminal) return nullptr;
  for (int i = 0; i < table.zzz_index; ++i) {
    const command_row& row = table.rows[static_cast<std::size_t>(i)];
    if (ask_match(word, row.name, "command")) return &row;
  }
  return nullptr;
}

// The word with ".run", here or in the directory of run files, left in `token`.
bool find_run_file() {
  const std::string file = std::string(token()) + ".run";
  for (const std::string& path : {file, input.run_directory + file}) {
    if (path.size() >= sizeof lexer.token || access(path.c_str(), R_OK) != 0) continue;
    set_token(path);
    return true;
  }
  return false;
}

// Words by which other programs are left.
bool means_quit(std::string_view word) {
  static constexpr std::string_view words[] = {"exit", "bye", "logout"};
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

[[noreturn]] void unknown_command() {
  const char* hint = means_quit(token()) ? " (\"quit;\" ends the program)" : "";
  if (top_frame().is_terminal && !input.from_arguments) {
    error_end_f("LUMA: command \"%s\" not recognized%s", lexer.token, hint);
  }
  error_end("Unknown command:", std::string(token()) + hint);
}

// What stands at the place of a command is the name of a file: nothing that a command is made of,
// or no command at all.
bool is_file_name(std::string_view text) {
  const bool quoted = text.starts_with('"');
  if (quoted) text.remove_prefix(1);
  const std::string path(text.substr(0, text.find_first_of(quoted ? "\"" : " \t\n;,")));
  if (path.empty() || access(path.c_str(), R_OK) != 0) return false;
  const bool one_word =
      std::all_of(path.begin(), path.end(), [](unsigned char c) { return std::isalpha(c) != 0; });
  if (!one_word) return true;
  std::string word = path;
  for (char& c : word) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return !find_command(word);
}

const command_row& look_up() {
  if (input.top == 0 && input.from_arguments && is_file_name(input.read_position)) {
    set_command_is_argument(true);
    return *find_command("procedure");
  }
  if (read_word() == 0) {
    read_char();  // consumed, since what follows the error would begin with it again
    error_end("No command!");
  }
  set_command_is_argument(input.top == 0 && input.from_arguments);
  const command_row* row = find_command(token());
  if (!row) row = ask_for_command(token());
  if (!row && find_run_file()) row = &run_file_row;
  if (!row) unknown_command();
  return *row;
}

void announce(const command_row& row) {
  if (!settings.echo || std::strcmp(row.name, "view") == 0) return;
  std::string name = row.name;
  for (char& c : name) c = static_cast<char>(std::toupper(c));
  emit("\nCOMMAND: ", name, "\n");
}

// Texts that may not be touched by a look-ahead.
bool keeps_its_text(const command_row& row) {
  for (const char* name : {"quote", "quit", "zzz"}) {
    if (std::strcmp(row.name, name) == 0) return true;
  }
  return false;
}

bool asks_for_help(const command_row& row) {
  return !keeps_its_text(row) && accept_question_mark();
}

bool is_macro_row(const command_row& row) {
  return table.rows.data() + table.zzz_index < &row && &row < table.rows.data() + table.rows.size();
}

// What must be set before the language starts.
bool legal_without_macros(const command_row& row) {
  static constexpr std::string_view names[] = {"macro", "macfloat", "hifile"};
  return std::find(std::begin(names), std::end(names), row.name) != std::end(names);
}

// On the command line "/" begins the name of a file.
bool is_argument_text() { return input.top == 0 && input.from_arguments; }

// Skips empty commands and comments. False where level 0 has ended.
bool skip_to_command() {
  for (;;) {
    if (level_zero_ended()) return false;
    const int c = read_char();
    if (!interpreter.running) return false;
    if (c < 33 || c == ';') continue;
    if (c == '/' && peek_char() == '*' && !is_argument_text()) {
      read_char();
      skip_rest_of_comment();
      continue;
    }
    unread_char();
    return true;
  }
}

// The next command can be read whatever was refused to the one before; else nothing can be done.
bool reach_command() {
  const memory_reserve_scope reserve;
  try {
    return skip_to_command();
  } catch (const std::bad_alloc&) {
    give_up_process("Not enough memory to read commands");
    return false;
  }
}

void head_and_handler(const command_row& row) {
  begin_command(row.name);
  if (!row.timed) no_timing();
  announce(row);
  if (asks_for_help(row)) {
    no_timing();
    print_command_help(row.name);
    return;
  }
  start_command_clock();
  call_handler(row);
}

void read_and_run_command() {
  if (noted_signal() != 0) check_interrupt();
  if (reach_command()) return head_and_handler(look_up());
  no_timing();
  stop_main_loop();
}

// Nobody goes on blindly after an error or interrupt: the console shows again what is said. In the
// background it isn't this process's.
void run_command_or_open_console() {
  try {
    read_and_run_command();
  } catch (const command_unwinding&) {
    if (!process.background) open_places(no_console);
    throw;
  }
}

void report_time() {
  emit(text_of("%s %.2f secs.", command.command_name.c_str(), command_seconds()));
  if (interpreter.watch_ram) {
    emit(" (", megabytes_text(static_cast<double>(arena.peak_ram)), ")");
  }
  emit("\n");
  view_to_end();
}

}  // namespace

void set_command_table(std::span<const command_row> rows) {
  table.rows = rows;
  for (auto& list : table.by_letter) list.clear();
  for (const command_row& row : rows) {
    if (row.name[0] >= 'a' && row.name[0] <= 'z')
      table.by_letter[static_cast<std::size_t>(row.name[0] - 'a')].push_back(&row);
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (std::strcmp(rows[i].name, "zzz") == 0) table.zzz_index = static_cast<int>(i);
  }
}

std::span<const command_row> command_table() { return table.rows; }
int zzz_row() { return table.zzz_index; }

const command_row* find_command(std::string_view word) {
  if (word.empty() || word[0] < 'a' || word[0] > 'z') return nullptr;
  for (const command_row* row : table.by_letter[static_cast<std::size_t>(word[0] - 'a')]) {
    if (matches(word, *row)) return row;
  }
  return nullptr;
}

void call_handler(const command_row& row) {
  if (!macros_on() && is_macro_row(row) && !legal_without_macros(row)) {
    error_end(row.name, "legal only when macros are enabled");
  }
  if (!row.handler) error_end(text_of("Command \"%s\" is not available yet", row.name));
  try {
    row.handler();
  } catch (const std::exception&) {
    raise_standard_error();
  }
}

void run_next() {
  begin_command("zeb*");
  run_in_jump_context(run_command_or_open_console);
  run_in_jump_context(command_is_over);
  release_command_memory();
}

void run_one_round() {
  forget_interrupt();
  refill_memory_reserve();
  run_pending_jump();
  interpreter.timed = interpreter.watch;
  if (interpreter.timed) measure_peak_anew();
  run_next();
  if (interpreter.timed) report_time();
  flush_log();
}

void stop_main_loop() { interpreter.running = false; }
void go_on_with_main_loop() { interpreter.running = true; }

void no_timing() { interpreter.timed = false; }

void watch_commands(bool on) {
  interpreter.watch = on;
  no_timing();
}

void watch_ram(bool on) { interpreter.watch_ram = on; }
void start_stopwatch() { interpreter.stopwatch_start = wall_clock(); }

void require_data(const char* what) {
  if (!data_in_memory()) error_end("Must read data before", what);
}

bool data_in_memory() { return hooks_of_language.data_present && hooks_of_language.data_present(); }

int run_system_command(const std::string& text) {
  if (safe_mode.on) error_end("Shell commands are forbidden in safe mode");
  if (std::getenv("ZEB_NO_SYSTEM"))  // NOLINT(concurrency-mt-unsafe)
    error_end("Shell commands are forbidden here (ZEB_NO_SYSTEM is set)");
  const terminal_for_child terminal;
  return std::system(text.c_str());  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace zeb
