#include "formats/nexus/data_block.h"

#include <map>

#include "base/indices.h"
#include "base/message_text.h"
#include "formats/nexus/assumptions_block.h"
#include "formats/nexus/data_format.h"
#include "formats/nexus/data_rows.h"
#include "language/fit_text.h"
#include "language/input.h"
#include "matrix/blocks.h"
#include "matrix/reading/matrix_reader.h"

namespace zeb {

namespace {

void read_dimensions(nexus_file& file) {
  for (;;) {
    const nexus_token word = file.in.token();
    if (word.is(';')) return;
    if (word.what == nexus_token::kind::end) file.in.fail("the file ends within \"dimensions\"");
    if (word.is("newtaxa")) file.new_taxa = true;
    if (!file.in.accept('=')) continue;
    const std::string text = file.in.value();
    int* const target = word.is("ntax") ? &file.ntax : word.is("nchar") ? &file.nchar : nullptr;
    if (target && !whole_number(text, 1, 1'000'000'000, target))
      file.in.fail("bad dimension " + text);
  }
}

// A cell takes a byte of the file at least. Dimensions that are a little too large are cut to what
// was read; those that the file can't hold by far mustn't take memory.
void check_dimensions(nexus_file& file) {
  const auto size = static_cast<double>(top_frame().file.most_bytes());
  if (size < 0) return;
  const double cells = static_cast<double>(file.ntax) * file.nchar;
  if (file.nchar > size || file.ntax > size || cells > 100 * size) {
    file.in.fail(text_of("a file of %.0f bytes can't hold %i taxa with %i characters", size,
                         file.ntax, file.nchar));
  }
}

std::vector<std::string> read_labels(nexus_file& file) {
  std::vector<std::string> labels;
  for (;;) {
    const int next = file.in.peek();
    if (next < 0) file.in.fail("the file ends within a list of labels");
    if (next == ';') {
      file.in.next();
      return labels;
    }
    labels.push_back(file.in.name(";"));
  }
}

// "title Text;" or "title 'Text';" with its blanks, as our own titles have it.
std::string read_title(nexus_file& file) {
  std::string title;
  const bool quoted = file.in.peek() == '\'';
  if (quoted) file.in.next_raw();
  for (int c = file.in.next_raw(); quoted || c != ';'; c = file.in.next_raw()) {
    if (c < 0) file.in.fail("the file ends within a title");
    if (quoted && c == '\'') {
      if (file.in.next_raw() != '\'') break;
      c = '"';
    }
    title += c == '\'' ? '"' : static_cast<char>(c);
  }
  file.in.back();
  file.in.skip_rest();
  return without_controls(title);
}

// Names of characters and states, kept until the matrix is there.
using character_names = std::map<int, matrix_state::character_name>;

int read_character_number(nexus_file& file, const std::string& text) {
  int number = 0;
  if (!whole_number(text, 1, file.nchar, &number)) file.in.fail("No character " + text);
  return number - 1;
}

// "1 name / state0 state1, 2 name / ..."
void read_char_state_labels(nexus_file& file, character_names& names) {
  while (!file.in.accept(';')) {
    if (file.in.accept(',')) continue;
    auto& entry = names[read_character_number(file, file.in.token().text)];
    const nexus_token& next = file.in.peek_token();
    if (next.what == nexus_token::kind::word) entry.name = file.in.token().text;
    if (!file.in.accept('/')) continue;
    while (file.in.peek_token().what == nexus_token::kind::word)
      entry.states.push_back(file.in.token().text);
  }
}

// "1 state0 state1, 2 ..."
void read_state_labels(nexus_file& file, character_names& names) {
  while (!file.in.accept(';')) {
    if (file.in.accept(',')) continue;
    auto& entry = names[read_character_number(file, file.in.token().text)];
    entry.states.clear();
    while (file.in.peek_token().what == nexus_token::kind::word)
      entry.states.push_back(file.in.token().text);
  }
}

void set_character_names(const nexus_characters& block, const character_names& names) {
  name_fitter fitter(named::character);
  for (const auto& [character, name] : names) {
    if (character >= block.count) continue;
    matrix_state::character_name fit;
    fit.name = fitter.fit(name.name);
    for (const std::string& state : name.states) fit.states.push_back(fitter.fit(state));
    set_character_name(block.first + character, fit);
  }
}

// Several blocks are called by their titles.
void name_blocks(const nexus_file& file) {
  const std::size_t count = file.character_blocks.size();
  if (count < 2 || at(matrix.nblocks) != count) return;
  std::vector<std::string> names(count + 1);
  for (std::size_t b = 0; b <= count; ++b) names[b] = b == 0 ? "all" : text_of("Block_%zu", b);
  bool any = false;
  for (const nexus_characters& block : file.character_blocks) {
    if (block.title.empty()) continue;
    names[at(matrix.characters[at(block.first)].block)] = block.title;
    any = true;
  }
  if (any) set_block_names(names);
}

}  // namespace

void read_taxa_block(nexus_file& file) {
  nexus_token word;
  while (file.in.command_follows(word)) {
    if (word.is("dimensions")) {
      read_dimensions(file);
    } else if (word.is("taxlabels")) {
      file.taxon_labels = read_labels(file);
    } else {
      file.skip_command(word);
    }
  }
}

void read_data_block(nexus_file& file, bool brings_taxa) {
  file.new_taxa = brings_taxa;
  nexus_format format;
  character_names names;
  std::string title;
  bool matrix_read = false;
  nexus_token word;
  while (file.in.command_follows(word)) {
    if (word.is("dimensions")) {
      read_dimensions(file);
    } else if (word.is("format")) {
      read_nexus_format(file, format);
    } else if (word.is("taxlabels")) {
      file.taxon_labels = read_labels(file);
    } else if (word.is("charlabels")) {
      const std::vector<std::string> labels = read_labels(file);
      for (std::size_t i = 0; i < labels.size(); ++i) names[static_cast<int>(i)].name = labels[i];
    } else if (word.is("charstatelabels")) {
      read_char_state_labels(file, names);
    } else if (word.is("statelabels")) {
      read_state_labels(file, names);
    } else if (word.is("options")) {
      read_nexus_options(file);
    } else if (word.is("title")) {
      title = read_title(file);
    } else if (word.is("matrix")) {
      if (file.ntax == 0) file.ntax = static_cast<int>(file.taxon_labels.size());
      check_dimensions(file);
      read_nexus_matrix(file, format, title);
      matrix_read = true;
    } else {
      file.skip_command(word);
    }
  }
  if (!matrix_read) file.in.fail("the data block has no matrix");
  set_character_names(file.character_blocks.back(), names);
  name_blocks(file);
  tell_what_was_read();
}

}  // namespace zeb
