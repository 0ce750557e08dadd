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
/// Index of the row of `zzz`: the rows behind it belong to the macro language.
int zzz_row();
/// The first row that `word` is a prefix of; null for none.
const command_row* find_command(std::string_view word);

/// Reads and runs one command, with its jump context and the release of temporary memory.
void run_one_command();
/// Runs the row's handler: an error where it isn't built, or needs the macro language.
void call_handler(const command_row& row);
/// Runs a task that may fail as a command does.
void run_in_jump_context(void (*task)());
/// Set up before the handler of every command, by the searches.
void set_pre_run_hook(void (*hook)());
/// Nested runs of a command string.
int command_string_depth();
/// Runs `text` (under 4,128 bytes) as commands from inside a handler, with the console silenced.
void run_command_string(const std::string& text);
/// Keeps `watch` from reporting a command that only showed or changed settings.
void no_timing();

/// A toggling command: "=" on, "-" off, "/" flip, nothing shows. The state is shown as the subject
/// and "is ON" or "is OFF" when `report` is on. `plural` prints "are".
void toggle_command(bool& setting, const char* subject, bool plural = false);
/// Shows "Subject is ON".
void show_toggle(bool value, const char* subject, bool plural = false);

/// "Must read data before" with `what` when there is no matrix. Checked through a registered
/// predicate, since the matrix is a floor above.
void require_data(const char* what);
void set_data_predicate(bool (*data_present)());
bool data_in_memory();

/// A shell command may not run with ZEB_NO_SYSTEM set: error in that case. Returns the status.
int run_system_command(const std::string& text);

}  // namespace zeb
