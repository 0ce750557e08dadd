// Strings: comparison, length, similarity.
#include <algorithm>
#include <cctype>
#include <string>

#include "console/console.h"
#include "console/output.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/name_matching.h"
#include "macro/script_text.h"
#include "macro/variable_reference.h"
#include "macro/variables.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

double equal_strings() {
  open_brackets();
  const std::string a = string_argument();
  const std::string b = string_argument();
  close_brackets();
  return a == b;
}

double holds_string() {
  open_brackets();
  const std::string a = string_argument();
  const std::string b = string_argument();
  close_brackets();
  return a.find(b) != std::string::npos;
}

double string_length() {
  open_brackets();
  const std::string text = string_argument();
  close_brackets();
  return static_cast<double>(text.size());
}

double string_similarity() {
  open_brackets();
  const std::string a = string_argument();
  const std::string b = string_argument();
  close_brackets();
  return similarity(a, b);
}

double last_cell_of_string() {
  open_brackets();
  const variable_reference reference = read_variable_reference(false);
  close_brackets();
  const int cell = section_start(reference);
  const auto size = static_cast<int>(variable_string(cell).size()) + 1;
  const int cell_size = variable_cell_size();
  const int cells_before = (size - 1) / cell_size;
  return cell + cells_before;
}

double tree_group_exists() {
  open_brackets();
  const std::string name = string_argument();
  close_brackets();
  for (std::size_t g = 0; g < tree_groups.names.size(); ++g) {
    if (tree_group_defined(static_cast<int>(g)) && tree_groups.names[g] == name) return 1;
  }
  return 0;
}

// Asks the user. Without one the question is shown, and answered in the safe way: "cancel".
double response() {
  open_brackets();
  const reading_flag quotes(&macro_reading::no_quotes);
  std::string text;
  for (int c = read_char(); c != ']' && c != ';'; c = read_char()) text += static_cast<char>(c);
  if (!user_present()) {
    report_line(text);
    return 2;
  }
  const int key = ask_key(text + " (y/n/c) ", "ync\x1b");
  return key == 'y' ? 1 : key == 'n' ? 0 : 2;
}

double yes() { return 1; }
double no() { return 0; }
double cancel() { return 2; }

// clang-format off
constexpr expression_function rows[] = {
    {"eqstring", "[X Y]", "1 if strings X and Y are equal", equal_strings},
    {"isinstring", "[A B]", "1 if string A holds string B", holds_string},
    {"lenstring", "[S]", "length of string S", string_length},
    {"stringsim", "[X Y]", "similarity of the strings, 1 - edit cost / length", string_similarity},
    {"stringend", "[var]", "last cell used by the string in var", last_cell_of_string},
    {"havetgp", "[Name]", "1 if there is a tree group of that name", tree_group_exists},
    {"getresponse", "[text]", "shows the text; 1 yes, 0 no, 2 cancel", response},
    {"yes", "", "1, as an answer to getresponse", yes, function_list::unlisted},
    {"no", "", "0, as an answer to getresponse", no, function_list::unlisted},
    {"cancel", "", "2, as an answer to getresponse", cancel, function_list::unlisted},
};
// clang-format on

}  // namespace

const std::span<const expression_function> string_functions = rows;

}  // namespace zeb
