// `tread`: trees in parenthetical notation.
#include <algorithm>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_place.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/script_text.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/drawing/tags.h"
#include "trees/notation/tree_text_reader.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

/// The next character. A quote that comes next opens a title, not a macro reference.
int peek_form() {
  const reading_flag plain(&macro_reading::no_expansion);
  return skip_blanks_peek();
}

target_group read_group_if_any() {
  const int c = peek_form();
  return c == '=' || c == '>' ? read_target_group() : target_group{};
}

/// "[" or "]" in front of the trees. True if that was all of the command.
bool read_tag_choice() {
  const int c = peek_form();
  if (c != '[' && c != ']') return false;
  if (accept_char('[')) {
    set_tag_adding(true);
  } else if (accept_char(']')) {
    set_tag_adding(false);
  }
  if (settings.report) {
    report_line("When reading tags from parenthetical trees,",
                std::string(tags.tags_add ? "add" : "don't add") + " them to existing tags");
  }
  return peek_form() == ';' && accept_char(';');
}

/// A title in quotes, if one comes next. Quotes and signs in it are no macro references.
std::string read_title() {
  const reading_flag plain(&macro_reading::no_expansion);
  const comma_reading commas;
  std::string title;
  if (!accept_char('\'')) return title;
  commas.set_literal(true);
  const int level = input.top;
  for (int c = read_char(); c != '\''; c = read_char()) {
    if (input.top < level || (c == ';' && input_ended())) error_end("Unexpected end of file");
    title += static_cast<char>(c);
    if (title.size() > 10000) error_end("Title of trees too long (is its quote closed?)");
  }
  return title;
}

/// Trees go to the slots after those in use; each counts once it is complete.
class tread_run {
 public:
  tread_run() : reader_(matrix.ntax), group_(read_group_if_any()), title_(read_title()) {}

  void run() {
    const int first = store.ntrees;
    const int level = input.top;
    const message_place_scope place([&] {
      if (level == 0 || input.top != level) return std::string();
      return text_of("(tree %i, line %i of %s)", store.ntrees - first + 1,
                     top_frame().line_number + 1, top_frame().name);
    });
    group_.start();
    int terminator = 0;
    while (terminator != ';') {
      terminator = reader_.read_tree();
      if (!reader_.tree().untouched()) accept();
      poll();
    }
    clear_progress();
    const int count = store.ntrees - first;
    if (settings.report && (count > 0 || !tags_were_read_)) {
      emit(count, " trees read");
      if (count > 0) emit(" (trees ", first, "-", store.ntrees - 1, ")");
      emit("\n");
    }
  }

 private:
  void accept() {
    if (reader_.tree().empty()) error_end("Tree without taxa");
    if (!reader_.tags_read().empty()) {
      accept_tags();
      return;
    }
    make_room_for_trees(1);
    reader_.tree().finish(stored_tree(store.ntrees), store.include_absent);
    take_slot();
    group_.add(store.ntrees - 1);
  }

  void accept_tags() {
    tags_were_read_ = true;
    take_tag_tree(reader_, title_);
  }

  void poll() {
    const double now = wall_clock();
    if (now - last_poll_ < 1.0) return;
    if (last_poll_ > 0) {
      check_interrupt();
      show_progress("Reading trees", store.ntrees, store.maxtrees);
    }
    last_poll_ = now;
  }

  tree_text_reader reader_;
  target_group group_;
  std::string title_;
  bool tags_were_read_ = false;
  double last_poll_ = 0;
};

}  // namespace

void tread_command() {
  if (!matrix.present) error_end("Must read data first");
  if (read_tag_choice()) {
    no_timing();
    return;
  }
  tread_run().run();
}

}  // namespace zeb
