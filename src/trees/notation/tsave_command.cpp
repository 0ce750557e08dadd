// `tsave`, `save` and `shortread`: tree files.
#include <algorithm>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/input_file.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/notation/auto_save.h"
#include "trees/notation/compact_file.h"
#include "trees/notation/rescued_trees.h"
#include "trees/notation/tree_file.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

std::string read_tree_file_name() {
  if (read_file_name() == 0) error_end("Must give", "name of", "tree file");
  return std::string(token());
}

void report_closing(const std::string& name, int saved) {
  emit("Closing ", name, " (with ", saved, " trees saved)\n");
}

void close_by_user() {
  if (!tree_file.file.is_open()) error_end("Must open treefile first!");
  close_tree_file();
  report_closing(tree_file.name, tree_file.saved);
}

void open_by_user(const std::string& name, bool parenthetical) {
  check_end();
  const bool one_open = tree_file.file.is_open();
  const std::string former = tree_file.name;
  const int saved = tree_file.saved;
  open_tree_file(name, parenthetical);
  if (one_open) report_closing(former, saved);
}

void save_in_one_shot(bool parenthetical) {
  const std::string name = read_tree_file_name();
  check_end();
  if (tree_file.file.is_open()) {
    error_end("Can't open new file: Tree file", tree_file.name, "is open");
  }
  if (input.top >= input.mxproc) {
    error_end("Too many input files open to open tree-file and save trees in one shot");
  }
  require_trees();
  open_tree_file(name, parenthetical);
  save_trees(std::vector<std::uint8_t>(at(store.ntrees), 1), {.closing = true});
  close_by_user();
  note_trees_saved();
}

void show_auto_save() {
  if (auto_save.seconds <= 0) {
    emit("Auto-save is off\n");
    return;
  }
  emit(text_of("Will auto-save results to files\n%s-1 and %s-2 every %i seconds...\n",
               auto_save.name.c_str(), auto_save.name.c_str(), auto_save.seconds));
}

/// Seconds given as t, mm:ss or hh:mm:ss.
int read_seconds() {
  std::int64_t seconds = read_int();
  if (seconds < 0) error_end("Must give", "seconds between", "auto-saves");
  for (int part = 0; part < 2 && accept_char(':'); ++part) {
    const int lower = read_int();
    if (lower < 0) error_end("Must give", "seconds between", "auto-saves");
    seconds = seconds * 60 + lower;
  }
  if (seconds > 1000000000) error_end("Time between auto-saves is too long");
  return static_cast<int>(seconds);
}

void set_auto_saving() {
  no_timing();
  if (skip_blanks_peek() != ';') {
    const int seconds = read_seconds();
    const bool parenthetical = accept_char('*');
    // A name after "0" means nothing, but does no harm.
    std::string name;
    if (seconds > 0 || skip_blanks_peek() != ';') name = read_tree_file_name();
    check_end();
    set_auto_save(seconds, seconds > 0 ? name : std::string(), parenthetical);
  }
  show_auto_save();
}

}  // namespace

void tsave_command() {
  if (accept_char('!')) {
    set_auto_saving();
    return;
  }
  if (skip_blanks_peek() == ';') {
    no_timing();
    if (tree_file.file.is_open()) {
      report_line("Tree file", tree_file.name, "is open, with", tree_file.saved, "trees saved");
    } else {
      report_line("No tree file is open");
    }
    return;
  }
  const bool slash = accept_char('/');
  if (slash && at_end_of_word(false)) {
    check_end();
    close_by_user();
    return;
  }
  require_data("opening a tree file");
  if (slash) return open_by_user("/" + read_tree_file_name(), false);
  // "=" and "*" in either order.
  bool parenthetical = accept_char('*');
  const bool at_once = accept_char('=');
  parenthetical = accept_char('*') || parenthetical;
  if (at_once) {
    save_in_one_shot(parenthetical);
  } else {
    open_by_user(read_tree_file_name(), parenthetical);
  }
}

void save_command() {
  if (!tree_file.file.is_open()) error_end("Must open treefile first!");
  if (accept_char('*')) {
    check_end();
    save_tags();
    return;
  }
  const tree_writing how{.active_only = accept_char('-')};
  if (how.active_only && !tree_file.parenthetical) {
    error_end("Can't save trees for active taxa in compact mode");
  }
  const std::vector<std::uint8_t> chosen = read_tree_list_or_last();
  check_end();
  save_trees(chosen, how);
  if (!how.active_only && std::count(chosen.begin(), chosen.end(), 0) == 0) note_trees_saved();
}

void shortread_command() {
  require_data("reading trees");
  const target_group group = read_target_group();
  const std::string name = read_tree_file_name();
  check_end();
  input_file file;
  if (!file.open(name)) error_end("Cannot open file", name + file.cause());
  read_compact_file(file, group);
}

}  // namespace zeb
