// ttags: storing, showing, editing and saving the texts of the tag tree.
#include <cctype>

#include "console/output.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tags.h"
#include "trees/drawing/text_lines.h"
#include "trees/hooks.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr int end_of_text = ';';

void require_target() {
  if (!tags.tags_present) error_end("Must set target tree (ttag*N ) before writing to a node");
}

/// A node of the tag tree, by number.
int read_tag_node() {
  const int node = read_int();
  if (node < 0) error_end("Must give", "node", "number");
  if (!is_tag_node(node)) error_end("No node", node, "in target tree");
  return node;
}

void show_tags(bool lines_of_tags) {
  no_timing();
  if (!has_any_tag()) {
    report_line("No messages to show");
    return;
  }
  if (!tags.tag_title.empty()) emit(tags.tag_title, "\n");
  print_diagram(tags.tag_tree, tags.tag_texts, lines_of_tags);
  newline();
}

// ---- arrays of the user ----

/// A form that begins with "<", ">" or "[" after "=", from its first character on. Doubled, the
/// numbers -1 to -5 stand for symbols.
void exchange_with_array() {
  const int sign = next_nonblank();
  if (!macros_on() || !hooks_of_trees.user_arrays.read_name || !tags.tags_present)
    error_end_f("Option \"=%c\" valid only when macros and tree-tags connected", sign);
  const bool internal_only = sign == '[';
  const bool symbols = accept_char(sign);
  const int array = hooks_of_trees.user_arrays.read_name();
  check_end();
  if (sign != '>') {
    tags_from_numbers(hooks_of_trees.user_arrays.values(array), symbols, internal_only);
    return;
  }
  int bad_node = -1;
  const std::vector<double> values = tags_as_numbers(symbols, internal_only, &bad_node);
  if (bad_node >= 0) error_end("Tag of node", bad_node, "is not a number");
  hooks_of_trees.user_arrays.store(array, values, 1);
}

// ---- forms ----

void start_storing() {
  const int c = skip_blanks_peek();
  if (c == '<' || c == '>' || c == '[') return exchange_with_array();
  check_end();
  // Those of a consensus stay with its tree.
  if (has_any_tag() && tags.source != tag_source::computed)
    warning("Existing tree-tags will be erased");
  clear_tags();
  set_tag_storing(true);
}

void write_to_node() {
  require_target();
  const int node = read_tag_node();
  const std::string text = read_text_to_semicolon();
  if (text.size() > longest_tag) error_end("Message too long (not copied)");
  set_tag(node, text);
}

void change_title() {
  if (!tags.tags_present) error_end("Must save messages before changing title!");
  const std::string title = read_text_to_semicolon();
  if (title.size() > longest_tag_title) error_end("Title for tree-tags too long (max. 512 chars.)");
  set_tag_title(title);
}

void erase() {
  require_target();
  const int sign = skip_blanks_peek();
  if (sign == '<' || sign == '>') {
    next_nonblank();
    check_end();
    return erase_tags(sign == '<');
  }
  const int node = read_tag_node();
  check_end();
  set_tag(node, {});
}

void set_target() {
  require_trees();
  int tree = store.ntrees - 1;
  if (!accept_char('!')) {
    tree = read_int();
    if (tree < 0) error_end("Must give", "tree", "number");
    check_tree_number(tree);
  }
  const int next = skip_blanks_peek();
  if (next == '<' && (!macros_on() || !hooks_of_trees.user_arrays.read_name))
    error_end("This option is valid only when macros are enabled");
  if (next != '<') check_end();
  if (next == '<') {
    set_tag_tree(stored_tree(tree));
  } else {
    set_tag_tree_to_stored(tree, tag_source::file);
  }
  if (next == '<') exchange_with_array();
}

void save_readable() {
  check_end();
  if (!has_any_tag()) error_end("No messages to save!");
  for (const std::string& line : readable_tags()) emit_broken_at_blanks(line);
}

/// "[", with a width and a place for graphic trees.
void separate_lines() {
  int width = tags.tag_width;
  char position = tags.tag_position;
  for (int c = skip_blanks_peek(); c != end_of_text; c = skip_blanks_peek()) {
    if (std::isdigit(c) && read_optional_int(&width)) continue;
    const int letter = std::tolower(next_nonblank());
    if (letter < 'a' || letter > 'd') error_end_f("Wrong argument for ttags: %c", letter);
    position = static_cast<char>(letter);
  }
  separate_tag_lines(width, position);
}

}  // namespace

void ttags_command() {
  const int c = skip_blanks_peek();
  if (c == end_of_text) return show_tags(false);
  next_nonblank();
  if (c != '&') no_timing();
  switch (c) {
    case '|':
      check_end();
      return show_tags(true);
    case '=':
    case '(':
      return start_storing();
    case ')':
      check_end();
      return set_tag_storing(false);
    case '-':
      check_end();
      set_tag_storing(false);
      return clear_tags();
    case '+':
      return write_to_node();
    case '>':
      return change_title();
    case '<':
      return erase();
    case '*':
      return set_target();
    case '/':
      return save_readable();
    case '[':
      return separate_lines();
    case ']':
      check_end();
      return join_tag_lines();
    case '!':
      check_end();
      if (!has_any_tag()) error_end("No messages to show");
      eliminate_empty_tag_lines();
      report_line("Eliminated empty lines in tags");
      return;
    case '&':
      return graphic_tags();
    default:
      error_end_f("Wrong argument for ttags: %c", c);
  }
}

}  // namespace zeb
