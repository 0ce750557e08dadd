// The command table's shape, the reading and running of commands, and what handlers share.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

/// Topic bits of a command row, for `help [`.
enum command_topic : std::uint32_t {
  topic_input = 1,
  topic_output = 2,
  topic_save = 4,
  topic_mapping = 8,
  topic_searching = 16,
  topic_diagnosis = 32,
  topic_compare = 64,
  topic_consensus = 128,
  topic_settings = 512,
  topic_various = 1024,
  topic_scripts = 2048,
  topic_memory = 4096,
  topic_supports = 8192,
  topic_trees = 16384,
  topic_characters = 32768,
  topic_weights = 65536,
};

using command_handler = void (*)();
struct option_table;

/// One row of the command table. A null `handler` is a command that isn't built yet: running it is
/// an error that says so.
struct command_row {
  const char* name;         // lower case
  command_handler handler;  // reads its own arguments from the input
  bool timed;               // `watch` reports its time
  std::uint32_t topics;
  bool whole_word = false;                // no abbreviation runs it
  const option_table* options = nullptr;  // its keywords, where it has any
};

/// Hands the interpreter its table, whose order is the rule for abbreviations. Called once.
void set_command_table(std::span<const command_row> rows);
std::span<const command_row> command_table();
/// Index of the row of `zzz`: the rows after it belong to the macro language.
int zzz_row();
/// The first row that `word` is a prefix of; null for none.
const command_row* find_command(std::string_view word);

/// What the interpreter keeps from command to command; the settings of `watch`.
struct interpreter_state {
  bool running = true;         // the main loop goes on
  bool watch = false;          // commands are timed
  bool timed = false;          // this one is
  bool watch_ram = false;      // `watch [`
  double stopwatch_start = 0;  // `watch *`; wall clock, seconds
};
extern interpreter_state interpreter;

/// Reads and runs one command, with its jump context and the release of temporary memory.
void run_next();
/// The same as a round of the main loop: with the jump that is pending, and the command's time.
void run_one_round();
/// The main loop ends with this command, or goes on after all.
void stop_main_loop();
void go_on_with_main_loop();
/// What `watch` sets; the command that switches it on isn't timed itself.
void watch_commands(bool on);
void watch_ram(bool on);
void start_stopwatch();
/// Runs the row's handler: an error where it isn't built, or needs the macro language.
void call_handler(const command_row& row);
/// Keeps `watch` from reporting a command that only showed or changed settings.
void no_timing();

/// "Must read data before" with `what` when there is no matrix.
void require_data(const char* what);
bool data_in_memory();

/// A shell command may not run in safe mode or with ZEB_NO_SYSTEM set: error in that case. Returns
/// the status.
int run_system_command(const std::string& text);

}  // namespace zeb
