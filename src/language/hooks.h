// What the rooms above hand to the language: when the program starts, or, for the macro language,
// while that is on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "base/input_file.h"
#include "language/error_place.h"

namespace zeb {

/// The data set in memory, for the breakdown of `mxram`.
struct data_description {
  int ntax = 0, nchar = 0, nstates = 0;
  int maxtrees = 0;
  int vault_trees = 0;          // that the vault has room for
  std::size_t label_bytes = 0;  // of labels and lengths of trees, which lie beside the arena
};

/// What the macro language does in place of the plain language. All null while it is off.
struct macro_layer {
  int (*read_char)() = nullptr;
  void (*unread_char)() = nullptr;
  /// The next character with nothing put in its place.
  int (*read_unexpanded)() = nullptr;
  /// A number or an expression; see `read_value`.
  bool (*read_value)(double* value, bool* parenthesised) = nullptr;
  /// True and the value for a variable or function of exactly this name, false for other words. A
  /// variable comes before an element called like it, a function after it (`names_element`).
  bool (*number_of_word)(std::string_view word, bool names_element, double* value) = nullptr;
  /// Where the script goes on after the text that is put in the place of an expansion.
  const char* (*outer_position)() = nullptr;
  /// The input stack changes.
  void (*frame_about_to_be_pushed)() = nullptr;
  void (*frame_pushed)() = nullptr;
  void (*frame_popped)() = nullptr;
  /// After an error or interrupt blocks and loops end; true if the reader was moved to the place
  /// after a loop.
  bool (*command_failed)() = nullptr;
  /// Where the script stands.
  error_place (*place)() = nullptr;
  /// The commands of the current file of `forfiles` end; false outside of that.
  bool (*end_item)() = nullptr;
  /// Nesting of loops.
  int (*loop_level)() = nullptr;
  /// Goes to the target of `goto [`.
  void (*run_pending_jump)() = nullptr;
};

enum class steering_wish { pause, go_on, stop };

struct language_hooks {
  /// Is there a data set?
  bool (*data_present)() = nullptr;
  data_description (*describe_data)() = nullptr;
  /// Drops the data set, before the arena is created anew.
  void (*drop_data)() = nullptr;
  /// "@T N" in lists of taxa: flags the terminals that descend from node N of tree T, or terminal
  /// N. Raises the error for a tree or node that isn't there; a negative number is a missing one.
  void (*flag_descendants)(int tree, int node, std::span<std::uint8_t> flags) = nullptr;
  /// Prints the entry of an expression function whose name begins with `word`; false for none.
  bool (*print_expression_help)(std::string_view word) = nullptr;
  /// Readers of foreign formats that `procedure` calls. NEXUS: the file is the top frame and
  /// "#NEXUS" has been read; the frame is popped when it is done. The others read a file that was
  /// opened.
  void (*read_nexus)() = nullptr;
  void (*read_fasta)(const std::string& type_word, input_file& file) = nullptr;
  void (*read_newick)(input_file& file) = nullptr;
  void (*read_phylip)(const std::string& type_word, input_file& file) = nullptr;
  /// TPS files, each of which is a character; `add`: of the data in memory.
  void (*read_tps)(std::span<const std::string> names, bool add) = nullptr;
  /// Reads a file whose first bytes show that it holds data or trees of some format; false where
  /// it is to be read as commands.
  bool (*read_known_format)(input_file& file) = nullptr;
  /// The life of a process that works for a parent, with the words of its call.
  int (*run_task)(int argc, char** argv) = nullptr;
  /// Such a process looks at what its parent says. True: the running command is to stop.
  bool (*stop_asked_by_parent)() = nullptr;
  /// The files that steer a background run have it paused, going on or stopped: its jobs too.
  void (*run_steered)(steering_wish wish) = nullptr;
  /// The text that stands for a file of that name, as its instructions do for a task; null: none.
  const std::string* (*text_of_name)(const std::string& name) = nullptr;
  /// A command of its instructions failed: the rest of them is void.
  void (*task_failed)(const std::string& why) = nullptr;
  /// Changed by `set_macro_layer` only.
  macro_layer macros;
};
extern language_hooks hooks_of_language;

/// Is the macro language on?
inline bool macros_on() { return hooks_of_language.macros.read_char != nullptr; }

}  // namespace zeb
