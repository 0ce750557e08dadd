// change: how often characters change from some states to others.
#include <bit>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/progress.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "mapping/commands.h"
#include "mapping/requests.h"
#include "mapping/state_changes.h"
#include "matrix/costs/cost_items.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct change_request {
  enum class form { both, by_tree, by_character } form = form::both;
  polytomy_kind polytomies = polytomy_kind::hard;
  std::vector<int> trees;
  std::vector<int> characters;
  std::uint32_t from = cost_item::every;
  std::uint32_t to = cost_item::every;
};

std::vector<int> read_numbers(unsigned flags, int end, std::string_view kind, const char* none) {
  std::vector<std::uint8_t> marks(at(end), 0);
  if (!read_list(flags, 0, end, kind, marks)) error_end(none);
  std::vector<int> numbers;
  for (int i = 0; i < end; ++i)
    if (marks[at(i)]) numbers.push_back(i);
  if (numbers.empty()) error_end(none);
  return numbers;
}

[[noreturn]] void wrong_arguments() { error_end("Use change trees / chars. / from to"); }

std::uint32_t read_side() {
  if (accept_char('?') || accept_char('.')) return cost_item::every;
  const std::uint32_t states = read_states();
  if (states == 0) wrong_arguments();
  return states;
}

change_request read_change_request() {
  change_request request;
  for (bool sign = true; sign;) {
    if (accept_char('['))
      request.form = change_request::form::by_tree;
    else if (accept_char(']'))
      request.form = change_request::form::by_character;
    else if (accept_char('!'))
      request.polytomies = polytomy_kind::soft;
    else
      sign = false;
  }
  request.trees = read_numbers(list_slash_ends | list_in_tree_buffer | list_one_tree, store.ntrees,
                               "tree", "No trees specified");
  if (!accept_char('/')) wrong_arguments();
  request.characters =
      read_numbers(list_slash_ends, matrix.nchar, "character", "No character specified");
  std::erase_if(request.characters, [](int c) {
    const character_record& record = matrix.characters[at(c)];
    return record.is_continuous || record.type == landmark_data;
  });
  if (request.characters.empty()) error_end("No (discrete) character specified");
  if (!accept_char('/')) wrong_arguments();
  request.from = read_side();
  request.to = read_side();
  if (request.from == cost_item::every && request.to == cost_item::every)
    error_end("Can't define both from and to as anything");
  check_end();
  return request;
}

void print_character(int character, const change_range& range) {
  const std::string name = character_name(character);
  std::string start = text_of("Char %i", character);
  if (name != text_of("Char. %i", character)) start += " (" + name + ")";
  emit(start, text_of(", min/max changes (%i-%i)\n", range.least, range.most));
}

bool is_possible(const change_request& request, int character) {
  return change_is_possible(character, request.from, request.to);
}

/// The least and the most on any of the trees.
void join(change_range& range, const change_range& other, bool first) {
  range.least = first ? other.least : std::min(range.least, other.least);
  range.most = first ? other.most : std::max(range.most, other.most);
}

/// By character, then tree.
using change_table = std::vector<std::vector<change_range>>;

change_table count_all(const change_request& request) {
  change_table table(request.characters.size());
  for (std::vector<change_range>& row : table) row.resize(request.trees.size());
  const std::size_t total = request.trees.size() * request.characters.size();
  std::size_t done = 0;
  for (std::size_t t = 0; t < request.trees.size(); ++t) {
    const tree_shape shape(stored_tree(request.trees[t]));
    for (std::size_t c = 0; c < request.characters.size(); ++c) {
      show_progress("Counting", static_cast<double>(done++), static_cast<double>(total));
      check_interrupt();
      table[c][t] =
          count_changes(shape, request.characters[c], request.from, request.to, request.polytomies);
    }
  }
  clear_progress();
  return table;
}

void print_trees(const change_request& request, const change_table& table) {
  for (std::size_t t = 0; t < request.trees.size(); ++t) {
    change_range total;
    for (const std::vector<change_range>& row : table) {
      total.least += row[t].least;
      total.most += row[t].most;
    }
    emit(text_of("Tree %i, total min/max changes (%i-%i)\n", request.trees[t], total.least,
                 total.most));
    if (request.form == change_request::form::by_tree) continue;
    for (std::size_t c = 0; c < table.size(); ++c) {
      emit("   ");
      if (is_possible(request, request.characters[c]))
        print_character(request.characters[c], table[c][t]);
      else
        emit(text_of("Char. %i, no such change possible\n", request.characters[c]));
    }
  }
}

void print_characters(const change_request& request, const change_table& table) {
  for (std::size_t c = 0; c < table.size(); ++c) {
    if (!is_possible(request, request.characters[c])) {
      emit(text_of("Char. %i, no such change possible\n", request.characters[c]));
      continue;
    }
    change_range range;
    for (std::size_t t = 0; t < table[c].size(); ++t) join(range, table[c][t], t == 0);
    print_character(request.characters[c], range);
  }
}

}  // namespace

void change_command() {
  require_data_and_trees("counting changes");
  const change_request request = read_change_request();
  expect_end();
  if (request.polytomies == polytomy_kind::soft)
    warn_of_large_polytomies(request.trees,
                             [](std::size_t n) { return n <= most_branches_resolved; });
  const change_table table = count_all(request);
  if (request.form == change_request::form::by_character)
    print_characters(request, table);
  else
    print_trees(request, table);
}

}  // namespace zeb
