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
#include "trees/notation/compact_format.h"
#include "trees/notation/rescued_trees.h"
#include "trees/notation/tree_file.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

std::string read_file_name() {
  if (read_item() == 0) error_end("Must give", "name of", "tree file");
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
  const std::string name = read_file_name();
  check_end();
  if (tree_file.file.is_open()) {
    error_end("Can't open new file: Tree file", tree_file.name, "is open");
  }
  if (input.top >= input.mxproc) {
    error_end("Too many input files open to open tree-file and save trees in one shot");
  }
  require_trees();
  open_tree_file(name, parenthetical);
  save_trees(std::vector<std::uint8_t>(at(store.ntrees), 1), {});
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
    if (seconds > 0 || skip_blanks_peek() != ';') name = read_file_name();
    check_end();
    set_auto_save(seconds, seconds > 0 ? name : std::string(), parenthetical);
  }
  show_auto_save();
}

std::vector<std::uint8_t> read_file(const std::string& name) {
  input_file file;
  if (!file.open(name)) error_end("Cannot open file", name + file.cause());
  const std::string text = file.rest();
  if (!file.fault().empty()) error_end("Can't read", name + file.cause());
  return {text.begin(), text.end()};
}

/// Where each tree of a compact file starts and ends. Errors for other data and files cut short.
std::vector<std::span<const std::uint8_t>> find_trees(std::span<const std::uint8_t> file,
                                                      const std::string& name) {
  const compact_head_fields head = read_compact_head(file);
  if (head.ntax < 0 && file.size() < 6) error_end("Unexpected end of file");
  if (head.ntax != matrix.ntax) {
    error_end("Tree file", name, "is not for", matrix.ntax, "taxa");
  }
  std::vector<std::span<const std::uint8_t>> trees;
  for (file = file.subspan(head.bytes); !file.empty();) {
    const std::size_t bytes = compact_tree_bytes(file, matrix.ntax);
    if (bytes == 0) error_end("Unexpected end of file");
    trees.push_back(file.first(bytes));
    file = file.subspan(bytes);
  }
  return trees;
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
  if (slash) return open_by_user("/" + read_file_name(), false);
  // "=" and "*" in either order.
  bool parenthetical = accept_char('*');
  const bool at_once = accept_char('=');
  parenthetical = accept_char('*') || parenthetical;
  if (at_once) {
    save_in_one_shot(parenthetical);
  } else {
    open_by_user(read_file_name(), parenthetical);
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
  const std::string name = read_file_name();
  check_end();
  const std::vector<std::uint8_t> file = read_file(name);
  const auto trees = find_trees(file, name);
  make_room_for_trees(trees.size());
  compact_reader reader(matrix.ntax);
  const int first = store.ntrees;
  double last_poll = wall_clock();
  for (std::size_t i = 0; i < trees.size(); ++i) {
    const int slot = first + static_cast<int>(i);
    if (!reader.read(trees[i], stored_tree(slot))) {
      error_end("Tree file", name, "is damaged: tree", i, "can't be read");
    }
    if (wall_clock() - last_poll > 1.0) {
      check_interrupt();
      show_progress("Reading trees", static_cast<double>(i), static_cast<double>(trees.size()));
      last_poll = wall_clock();
    }
  }
  clear_progress();
  // Only now do the trees count: a file that fails on the way leaves none of its own.
  group.start();
  for (std::size_t i = 0; i < trees.size(); ++i) {
    take_slot();
    group.add(store.ntrees - 1);
  }
  if (!settings.report) return;
  emit(trees.size(), " trees read");
  if (!trees.empty()) emit(" (trees ", first, "-", store.ntrees - 1, ")");
  emit("\n");
}

}  // namespace zeb
