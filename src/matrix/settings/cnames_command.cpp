// `cnames`: names of characters, of their states, and of data blocks.
#include <cctype>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/toggles.h"
#include "matrix/blocks.h"
#include "matrix/commands.h"
#include "matrix/hooks.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "matrix/reading/matrix_writer.h"

namespace zeb {
namespace {

constexpr int most_states = 32;

/// The character that an entry is for: a number (after "@B", within that block) or a name.
struct character_reference {
  int character = 0;
  int number = 0;  // as the user gave it
  int block = 0;   // 0: counted in the whole matrix
};

int character_named(std::string_view text, int first, int end) {
  const std::string word = normal_form(text);
  for (int exact = 1; exact >= 0; --exact) {
    for (int c = first; c < end; ++c) {
      if (at(c) >= matrix.char_names.size()) break;
      const std::string& name = matrix.char_names[at(c)].name;
      if (is_prefix(word, name) && (!exact || name.size() == word.size())) return c;
    }
  }
  return -1;
}

character_reference read_character_reference() {
  character_reference found;
  if (accept_char('@')) found.block = read_block_reference(find_list_kind("character"));
  int first = 0;
  int end = 0;
  characters_of_block(found.block, &first, &end);
  const int next = skip_blanks_peek();
  if (std::isdigit(next) || next == '(') {
    found.number = read_int();
    found.character = first + found.number;
    if (found.number < 0) error_end("Must specify character number");  // also beyond all integers
    if (found.number >= end - first) {
      if (found.block) error_end("No character number", found.number, "in block", found.block);
      error_end("No character number", found.number);
    }
    return found;
  }
  if (next > 255 || !name_chars[at(next)] || read_name() == 0) {
    error_end("Must specify character number");
  }
  found.character = character_named(token(), first, end);
  if (found.character < 0) {
    if (found.block) error_end("No character named", token(), "in block", found.block);
    error_end("No character named", token());
  }
  found.number = found.character - first;
  return found;
}

/// "-" stands for no name, so that a character can have names of states only.
std::string name_of_token() { return token() == "-" ? std::string() : std::string(token()); }

/// Error where no further name of a state, or of a landmark, may follow.
void check_room_for_name(const character_reference& reference,
                         const matrix_state::character_name& entry) {
  const int names = static_cast<int>(entry.states.size());
  if (matrix.characters[at(reference.character)].is_continuous)
    error_end("Cannot name states for continuous characters");
  if (const landmark_configuration* const landmarks = configuration_of(reference.character)) {
    if (names == landmarks->points)
      error_end_f("Landmark configuration %i (%s) has only %i landmarks", reference.number,
                  entry.name.c_str(), names);
  } else if (names == most_states) {
    error_end("Character", reference.number, "has more names of states than", most_states);
  }
}

/// "N name state0 state1 ... ;", after "{" or "+".
void read_character_entry() {
  const character_reference reference = read_character_reference();
  if (read_item() == 0) {
    if (reference.block) {
      error_end("Must give name for char.", reference.number, "of block", reference.block);
    }
    error_end("Must give name for character", reference.number);
  }
  matrix_state::character_name entry;
  entry.name = name_of_token();
  while (read_item() > 0) {
    check_room_for_name(reference, entry);
    entry.states.push_back(name_of_token());
  }
  accept_char(';');
  set_character_name(reference.character, std::move(entry));
}

/// "N name ;", after "[".
void read_block_entry() {
  const int next = skip_blanks_peek();
  if (!std::isdigit(next) && next != '(') error_end("Must specify block number");
  const int block = read_int();
  if (matrix.nblocks < 2) error_end("Can't name blocks; a single block read");
  if (block == 0) error_end("Can't rename block 0 (\"ALL\")");
  if (block < 0 || block > matrix.nblocks) error_end("Can't name block", block);
  // Data with both could be written, but not be read again.
  if (!landmark_configurations().empty())
    error_end("Sorry, if data matrix contains landmarks, blocks cannot be named data matrix");
  if (read_item() == 0) error_end("Must give name for block", block);
  const std::string name(token());
  if (!accept_char(';')) {
    error_end_f("Found \"%c\" after name (\"%s\") for block %i (block name must end with \";\")",
                skip_blanks_peek(), name.c_str(), block);
  }
  if (matrix.block_names.empty()) {
    matrix.block_names.resize(at(matrix.nblocks) + 1);
    matrix.block_names[0] = "all";
  }
  matrix.block_names[at(block)] = name;
}

// Of itself or of its states.
bool has_names(int character) {
  if (at(character) >= matrix.char_names.size()) return false;
  const matrix_state::character_name& names = matrix.char_names[at(character)];
  return !names.name.empty() || !names.states.empty();
}

void write_names(bool only_active) {
  emit("cnames\n");
  for (int c = 0; c < matrix.nchar; ++c) {
    if (only_active && !matrix.characters[at(c)].active) continue;
    if (has_names(c)) emit(written_names(c, matrix.char_names[at(c)]));
  }
  for (int block = 1; at(block) < matrix.block_names.size(); ++block) {
    if (matrix.block_names[at(block)].empty()) continue;
    emit("[", block, " ", matrix.block_names[at(block)], " ;\n");
  }
  emit(";\n");
}

void show_names() {
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!has_names(c)) continue;
    std::string line = text_of("%5i  ", c) + character_name(c);
    const std::vector<std::string>& states = matrix.char_names[at(c)].states;
    const char* separator = ": ";
    for (std::size_t s = 0; s < states.size(); ++s) {
      if (states[s].empty()) continue;
      const int number = static_cast<int>(s);
      line += separator + (configuration_of(c) ? std::to_string(number) : state_symbol(c, number)) +
              " " + states[s];
      separator = ", ";
    }
    emit(line, "\n");
  }
  if (matrix.char_names.empty()) emit("Characters are not named\n");
}

void read_entries() {
  bool warned = false;
  int former = 0;
  for (int c = skip_blanks_peek(); c != ';'; c = skip_blanks_peek()) {
    if (c != '{' && c != '[' && c != '+') {
      // An entry with "+" may stand alone: "cnames +3 name;".
      if (former == '+') return;
      error_end_f("Found \"%c\" when expecting {, [ or + in names of characters", c);
    }
    read_char();
    former = c;
    if (c == '[') {
      read_block_entry();
      continue;
    }
    if (!warned && hooks_of_matrix.constraints_defined && hooks_of_matrix.constraints_defined()) {
      warning("Constraints will have to be redefined if character names are modified");
      warned = true;
    }
    read_character_entry();
  }
  // The ";" of the whole: with it left in place, a further entry would be read as a command.
  read_char();
}

}  // namespace

void cnames_command() {
  no_timing();
  require_data("naming characters");
  switch (skip_blanks_peek()) {
    case ';':
      return show_names();
    case '=':
    case '-':
    case '/':
      return toggle_command(matrix.use_char_names, "Use of character names");
    case '*':
    case '!': {
      const int c = next_nonblank();
      check_end();
      return write_names(c == '!');
    }
    default:
      return read_entries();
  }
}

}  // namespace zeb
