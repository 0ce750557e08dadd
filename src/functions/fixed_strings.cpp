#include "functions/fixed_strings.h"
#include "base/message_text.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "language/fit_text.h"
#include "language/interpreter.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_files.h"
#include "macro/variables.h"
#include "matrix/matrix.h"
#include "parallel/hosts/host_groups.h"
#include "parallel/transport/connection.h"
#include "taxonomy/taxonomy.h"
#include "trees/drawing/tags.h"
#include "trees/tree_groups.h"

namespace zeb {
namespace {

int number_below(int count, const char* noun) {
  const double value = macro_whole_value();
  if (!(value >= 0) || value >= count) error_end("No", noun, value_text(value));
  return static_cast<int>(value);
}

std::string state_text(int character, int state) {
  const auto c = static_cast<std::size_t>(character);
  const auto s = static_cast<std::size_t>(state);
  if (c < matrix.char_names.size() && s < matrix.char_names[c].states.size() &&
      !matrix.char_names[c].states[s].empty()) {
    return matrix.char_names[c].states[s];
  }
  const bool landmarks = matrix.characters[c].type == landmark_data;
  return text_of(landmarks ? "Land. %i" : "State %i", state);
}

std::string character_text(int character) {
  const auto c = static_cast<std::size_t>(character);
  const bool named = c < matrix.char_names.size() && !matrix.char_names[c].name.empty();
  return named ? matrix.char_names[c].name : text_of("Char. %i", character);
}

std::string group_text(std::span<const std::string> names, std::uint32_t defined) {
  const int group = number_below(32, "group");
  return defined >> group & 1U ? names[static_cast<std::size_t>(group)] : std::string();
}

std::string tree_group_text() {
  const int group = number_below(tree_groups.limit, "group");
  return tree_group_defined(group) ? tree_groups.names[static_cast<std::size_t>(group)] : "";
}

std::string taxonomy_text() {
  if (!taxonomy_in_use()) error_end("No taxonomy defined!");
  const taxonomic_groups all = read_taxonomy();
  return all.groups[at(number_below(static_cast<int>(all.groups.size()), "group"))].name;
}

bool data_string(std::string_view word, std::string* text) {
  static constexpr std::string_view words[] = {"taxon",   "character", "state", "block",
                                               "dataset", "agroup",    "xgroup"};
  if (std::find(std::begin(words), std::end(words), word) == std::end(words)) return false;
  if (!matrix.present) error_end("Must read data before using data in expressions");
  if (word == "taxon") {
    *text = taxon_name(number_below(matrix.ntax, "taxon"));
  } else if (word == "character") {
    *text = character_text(number_below(matrix.nchar, "character"));
  } else if (word == "state") {
    const int character = number_below(matrix.nchar, "character");
    *text = state_text(character, number_below(10000, "state"));
  } else if (word == "block") {
    const int block = number_below(matrix.nblocks + 1, "block");
    const auto b = static_cast<std::size_t>(block);
    *text = b < matrix.block_names.size() && !matrix.block_names[b].empty()
                ? matrix.block_names[b]
                : text_of("Block %i", block);
  } else if (word == "dataset") {
    *text = matrix.title;
  } else if (word == "agroup") {
    *text = group_text(matrix.taxon_group_names, matrix.defined_taxon_groups);
  } else {
    *text = group_text(matrix.character_group_names, matrix.defined_character_groups);
  }
  return true;
}

bool other_string(std::string_view word, std::string* text) {
  if (word == "tgroup") {
    *text = tree_group_text();
  } else if (word == "ttag") {
    const int node = number_below(static_cast<int>(tags.tag_texts.size()), "node");
    *text = tags.tag_texts[static_cast<std::size_t>(node)];
  } else if (word == "hifstring") {
    *text = script_file_string(active_script_file());
  } else if (word == "curfile") {
    *text = walked.file;
  } else if (word == "host") {
    const int host = number_below(static_cast<int>(hosts_in_use().size()), "host");
    *text = hosts_in_use()[static_cast<std::size_t>(host)].name;
  } else if (word == "hgroup") {
    *text = host_group_name(number_below(most_host_groups, "group"));
  } else if (word == "taxonomy") {
    *text = taxonomy_text();
  } else {
    return false;
  }
  return true;
}

}  // namespace

// What data bring is put into the script: it mustn't end a command there or open an expansion.
bool fixed_string(std::string_view word, std::string* text) {
  if (!data_string(word, text) && !other_string(word, text)) return false;
  // The quotes around a title stay.
  const bool quoted = text->size() > 1 && text->front() == '\'' && text->back() == '\'';
  *text = quoted ? "'" + fit_text(text->substr(1, text->size() - 2)) + "'" : fit_text(*text);
  return true;
}

}  // namespace zeb
