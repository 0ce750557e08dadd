// How words in place of a number are answered: functions of every subject, names of taxa and
// characters, and the fixed strings of "$".
#include <strings.h>

#include <algorithm>
#include <map>
#include <string>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "functions/function_table.h"
#include "language/help.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_files.h"
#include "macro/string_conversion.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using function_map = std::map<std::string_view, double (*)()>;

const function_map& working_functions() {
  static const function_map map = [] {
    function_map all;
    for (const auto rows : all_functions()) {
      for (const function_row& row : rows) all.emplace(row.name, row.value);
    }
    return all;
  }();
  return map;
}

bool is_reserved(std::string_view name) {
  const auto table = function_table();
  return !name.empty() && std::any_of(table.begin(), table.end(),
                                      [&](const function_help& row) { return row.name == name; });
}

// Names that work without a row of their own, while their subject isn't built.
bool is_known_without_row(std::string_view name) {
  static constexpr std::string_view names[] = {"acttasks", "lmycell",  "lmycoord",
                                               "lmzcell",  "lmzcoord", "rfdistp"};
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool resolve_function(std::string_view token, double* value) {
  const auto found = working_functions().find(token);
  if (found != working_functions().end()) {
    *value = found->second();
    return true;
  }
  if (token == "absicnl") return false;  // reserved, but never answered
  if (is_reserved(token) || is_known_without_row(token)) {
    error_end_f("Expression \"%s\" is not available yet", std::string(token).c_str());
  }
  return false;
}

bool resolve_name(std::string_view token, double* value) {
  if (!matrix.present) return false;
  const std::string word(token);
  for (int t = 0; t < matrix.ntax; ++t) {
    if (strcasecmp(std::string(taxon_name(t)).c_str(), word.c_str()) == 0) {
      *value = t;
      return true;
    }
  }
  if (!matrix.use_char_names) return false;
  for (std::size_t c = 0; c < matrix.char_names.size(); ++c) {
    if (strcasecmp(matrix.char_names[c].name.c_str(), word.c_str()) == 0) {
      *value = static_cast<double>(c);
      return true;
    }
  }
  return false;
}

// ---- fixed strings ----

int number_below(int count, const char* noun) {
  const double value = macro_value();
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
  const int group = number_below(store.tgroup_limit, "group");
  const auto g = static_cast<std::size_t>(group);
  const bool defined =
      g / 32 < store.defined_groups.size() && (store.defined_groups[g / 32] >> (g % 32) & 1U);
  return defined && g < store.group_names.size() ? store.group_names[g] : std::string();
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
  } else if (word == "taxonomy" || word == "host" || word == "hgroup" || word == "curfile") {
    error_end_f("Expression \"$%s\" is not available yet", std::string(word).c_str());
  } else {
    return false;
  }
  return true;
}

// Answered by no function, for good reasons: a name kept free, and a fixed string.
bool is_no_function(std::string_view name) { return name == "absicnl" || name == "hifstring"; }

// `help + word`: every function that the word is a prefix of.
bool print_function_help(std::string_view word) {
  bool found = false;
  for (const function_help& row : function_table()) {
    if (row.help.empty() || !row.name.starts_with(word)) continue;
    emit(row.name, row.help, "\n");
    if (!working_functions().contains(row.name) && !is_no_function(row.name))
      emit("      (not available yet)\n");
    found = true;
  }
  return found;
}

}  // namespace

std::vector<std::span<const function_row>> all_functions() {
  return {data_functions(),    block_functions(),  tree_functions(),   tree_group_functions(),
          score_functions(),   change_functions(), search_functions(), group_functions(),
          setting_functions(), number_functions(), array_functions(),  string_functions(),
          file_functions()};
}

void register_functions() {
  set_expression_help(print_function_help);
  connect_user_arrays();
  set_reserved_names(is_reserved);
  set_function_resolver(resolve_function, resolve_name);
  add_fixed_strings(data_string);
  add_fixed_strings(other_string);
}

}  // namespace zeb
