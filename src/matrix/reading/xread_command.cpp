// `xread`: reads a matrix, writes it, edits its cells or makes data at random.
#include <algorithm>
#include <string>
#include <vector>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_kinds.h"
#include "language/lists.h"
#include "language/taxon_reference.h"
#include "macro/script_text.h"
#include "matrix/character_steps.h"
#include "matrix/commands.h"
#include "matrix/hooks.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "matrix/random_data.h"
#include "matrix/reading/cell_editing.h"
#include "matrix/reading/matrix_reader.h"
#include "matrix/reading/matrix_writer.h"

namespace zeb {
namespace {

constexpr int longest_branch = 1000;  // of simulated data
constexpr int most_changes = 10000;   // per character

using flag_list = std::vector<std::uint8_t>;

// ---- writing ----

// A copy of the matrix, by taxon and character, with the cells of each character shuffled among the
// taxa. In the arena until the end of the command.
std::span<const std::uint32_t> shuffled_cells() {
  const std::size_t nchar = at(matrix.nchar);
  const auto cells = alloc_high<std::uint32_t>(checked_product(at(matrix.ntax), nchar));
  const flag_list all(at(matrix.ntax), 1);
  std::vector<std::uint32_t> column(at(matrix.ntax));
  std::vector<int> scratch(at(matrix.ntax));
  for (int c = 0; c < matrix.nchar; ++c) {
    for (int t = 0; t < matrix.ntax; ++t) column[at(t)] = cell(t, c);
    permute_cells(c, column, all, false, scratch);
    for (int t = 0; t < matrix.ntax; ++t) cells[at(t) * nchar + at(c)] = column[at(t)];
  }
  return cells;
}

void write_as(int form) {
  require_data("writing it");
  expect_end();
  flag_list taxa(at(matrix.ntax), 1);
  flag_list characters(at(matrix.nchar), 1);
  write_request request{.taxa = taxa,
                        .characters = characters,
                        .settings = form != '!',
                        .cells = {},
                        .more_rows = {}};
  if (form == '-') {
    std::copy_n(matrix.taxon_active.begin(), matrix.ntax, taxa.begin());
    for (std::size_t c = 0; c < characters.size(); ++c) {
      characters[c] = matrix.characters[c].active;
    }
    if (std::count(characters.begin(), characters.end(), 1) == 0) {
      error_end("No active characters");
    }
  }
  if (form == '[') request.cells = shuffled_cells();
  write_matrix(request);
}

// ":T": the taxa, and the internal nodes of tree T with their down-pass sets.
void write_with_nodes() {
  require_data("writing it");
  int tree = 0;
  read_optional_int(&tree);
  expect_end();
  if (!hooks_of_matrix.node_rows) error_end("Tree(s) are required");
  const std::vector<named_row> nodes = hooks_of_matrix.node_rows(tree);
  const flag_list taxa(at(matrix.ntax), 1);
  const flag_list characters(at(matrix.nchar), 1);
  write_matrix(
      {.taxa = taxa, .characters = characters, .settings = true, .cells = {}, .more_rows = nodes});
}

// ---- editing ----

flag_list read_flags(std::string_view kind, int count) {
  flag_list flags(at(count), 0);
  if (skip_blanks_peek() == ';') error_end_f("Must specify %s", kind.data());
  if (accept_char('[')) {
    const bool given = read_list(list_plain, 0, count, kind, flags);
    if (!accept_char(']')) error_end_f("Expected ']' after list of %s numbers", kind.data());
    if (!given) error_end_f("Must specify %s", kind.data());
    return flags;
  }
  if (kind == "taxon") {
    const int taxon = read_taxon(flags);
    if (taxon >= 0) flags[at(taxon)] = 1;
    return flags;
  }
  int number = 0;
  if (read_optional_int(&number)) {
    if (number < 0) error_end_f("Must specify %s", kind.data());  // also beyond all integers
    if (number >= count) error_end("No", kind, number);
    flags[at(number)] = 1;
    return flags;
  }
  if (read_name() == 0) error_end_f("Must specify %s", kind.data());
  const std::string name(token());
  const std::vector<int> found = elements_named(find_list_kind(kind), 0, count, name);
  if (found.empty()) error_end("No", kind, "named", name);
  for (const int element : found) flags[at(element)] = 1;
  return flags;
}

// The text of a set of states: up to a blank, or to the bracket that closes the one in front.
std::string read_states() {
  std::string text;
  int c = skip_blanks_peek();
  const int closing = c == '[' ? ']' : c == '(' ? ')' : 0;
  for (c = read_char(); c != ';'; c = read_char()) {
    if (c < 33 && !closing) break;
    if (c > 32) text += static_cast<char>(c);
    if (c == closing) return text;
  }
  unread_char();
  if (closing) error_end_f("Expected '%c' after states", closing);
  if (text.empty()) error_end("Must specify states");
  return text;
}

void edit_cells() {
  require_data("editing cells");
  if (accept_char('=')) {
    for (character_record& record : matrix.characters) record.needs_recheck = 1;
    recheck_steps();
    drop_packed_data();
    if (skip_blanks_peek() == ';') return;
  }
  if (accept_char('?')) {
    const double of_character = read_float();
    const double of_taxon = read_float();
    if (of_character < 0 || of_character > 1 || of_taxon < 0 || of_taxon > 1) {
      error_end("Probabilities of missing entries must be 0-1");
    }
    check_end();
    const int blanked = blank_cells_at_random(of_character, of_taxon);
    if (settings.report) {
      report_line(counted(blanked, "cell is", "cells are"), "now missing");
    }
    return;
  }
  const bool recheck = !accept_char('!');
  while (skip_blanks_peek() != ';') {
    const flag_list characters = read_flags("character", matrix.nchar);
    const flag_list taxa = read_flags("taxon", matrix.ntax);
    set_cells(characters, taxa, read_states(), recheck);
  }
}

// ---- making data ----

int read_state_count() {
  const int states = read_int();
  const int most =
      8 * (matrix.present && matrix.next_cell_bytes ? matrix.next_cell_bytes : matrix.cell_bytes);
  if (states > most) {
    error_end("With current settings, can have", most, "states at the most");
  }
  if (states < 1) error_end("Must specify number of states");
  return states;
}

int read_character_count() {
  const int nchar = read_int();
  if (nchar < 1) error_end("Must specify number of characters");
  return nchar;
}

void make_random() {
  const int nchar = read_character_count();
  const int ntax = read_int();
  if (ntax < 4) error_end("Must specify number of taxa (4 or more)");
  const int states = read_state_count();
  check_end();
  warn_of_replacement(text_of("Random Data (%i states)", states).c_str());
  make_random_matrix(nchar, ntax, states);
}

/// What the model of this sign needs, after the number of the tree.
evolution_model read_model(int sign) {
  if (sign == '+') {
    const double stasis = read_float();
    if (stasis < 0 || stasis > 100) error_end("Probability of stasis must be 0-100");
    return {.model = evolution_model::stasis, .amount = stasis};
  }
  if (sign == '&') {
    const int changes = read_int();
    if (changes < 0 || changes > most_changes) {
      error_end("Number of changes per character must be 0 -", most_changes);
    }
    return {.model = evolution_model::changes, .amount = static_cast<double>(changes)};
  }
  const double length = read_float();
  if (length < 0 || length > longest_branch) {
    error_end("Length of branches must be 0 -", longest_branch);
  }
  return {.model = sign == '>' ? evolution_model::uniform : evolution_model::exponential,
          .amount = length};
}

void make_from_tree(int sign) {
  require_data("generating data from a tree");
  int tree = 0;
  if (!read_optional_int(&tree)) error_end("Must specify tree for generating data");
  if (!hooks_of_matrix.stored_tree) error_end("Tree(s) are required");
  const std::vector<std::int32_t> ancestors = hooks_of_matrix.stored_tree(tree);
  const evolution_model model = read_model(sign);
  const int nchar = read_character_count();
  const int states = read_state_count();
  check_end();
  warn_of_replacement(title_of(model).c_str());
  make_matrix_from_tree(ancestors, model, nchar, states);
}

// A quote that comes first opens a title, not a macro reference.
int peek_form() {
  const reading_flag plain(&macro_reading::no_expansion);
  return skip_blanks_peek();
}

}  // namespace

void xread_command() {
  const int first = peek_form();
  switch (first) {
    case '*':
    case '-':
    case '[':
    case '!':
      next_nonblank();
      write_as(first);
      return;
    case ':':
      next_nonblank();
      write_with_nodes();
      return;
    case '=':
      next_nonblank();
      edit_cells();
      return;
    case '/':
      next_nonblank();
      make_random();
      return;
    case '+':
    case '>':
    case '<':
    case '&':
      next_nonblank();
      make_from_tree(first);
      return;
    default:
      read_matrix();
  }
}

void xwipe_command() {
  expect_end();
  wipe_matrix();
}

}  // namespace zeb
