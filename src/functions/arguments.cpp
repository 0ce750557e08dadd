#include "functions/arguments.h"

#include <cctype>
#include <cmath>

#include "base/errors.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "macro/variable_reference.h"
#include "macro/variables.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

int checked_element(int count, const char* noun) {
  const int number = whole_argument();
  if (number < 0 || number >= count) error_end("No", noun, number);
  return number;
}

std::vector<double> values_in_brackets(std::size_t least, std::size_t most, double (*read)()) {
  open_brackets();
  std::vector<double> values;
  while (skip_blanks_peek() != ']') {
    if (values.size() == most || skip_blanks_peek() == ';') error_end("Need closing brackets");
    if (accept_char(',')) continue;
    values.push_back(read());
  }
  close_brackets();
  if (values.size() < least) error_end("Give number");
  return values;
}

}  // namespace

void open_brackets() {
  if (!accept_char('[')) error_end("Need opening brackets");
}

void close_brackets() {
  if (!accept_char(']')) error_end("Need closing brackets");
}

bool brackets_follow() { return peek_raw_char() == '['; }

std::vector<double> bracketed_values(std::size_t least, std::size_t most) {
  return values_in_brackets(least, most, macro_value);
}

std::vector<double> bracketed_whole_values(std::size_t least, std::size_t most) {
  return values_in_brackets(least, most, macro_whole_value);
}

int whole_argument() {
  accept_char(',');
  const int next = skip_blanks_peek();
  if (next == ']' || next == ';') error_end("Give number");
  const double value = macro_whole_value();
  if (!(value >= -2147483648.0 && value <= 2147483647.0)) error_end("Give number");
  return static_cast<int>(value);
}

int tree_argument() {
  const int next = skip_blanks_peek();
  if (next == ']' || next == ';') error_end("Expected tree number");
  const int tree = whole_argument();
  if (tree < 0 || tree >= store.ntrees) error_end("Expected tree number");
  return tree;
}

int node_argument(int tree) {
  const int node = whole_argument();
  const const_tree_span nodes = stored_tree(tree);
  if (node < 0) error_end("No node", node);
  if (node >= node_limit(nodes, matrix.ntax) || (node < matrix.ntax && is_absent(nodes, node))) {
    error_end("Tree doesn't have such node");
  }
  return node;
}

int character_argument() {
  require_data("using data in expressions");
  return checked_element(matrix.nchar, "character");
}

int taxon_argument() {
  require_data("using data in expressions");
  return checked_element(matrix.ntax, "taxon");
}

int group_argument(int groups) { return checked_element(groups, "group"); }

std::string string_argument() {
  accept_char(',');
  const int next = skip_blanks_peek();
  if (next == ']' || next == ';') error_end("Give number");
  if (std::isdigit(next) || next == '(') {
    const variable_reference reference = read_variable_reference(false);
    return variable_string(section_start(reference));
  }
  // A name of a variable that holds the string; any other word is the string itself.
  const reading_flag quotes(&macro_reading::no_quotes);
  std::string word;
  for (int c = read_char();; c = read_char()) {
    if (c < 33 || c == ']' || c == ',' || c == ';' || c == '[') {
      unread_char();
      break;
    }
    word += static_cast<char>(c);
  }
  const int variable = find_variable(word);
  if (variable < 0) return word;
  const variable_reference reference = read_subscripts(variable, true, false);
  return variable_string(section_start(reference));
}

}  // namespace zeb
