#include "matrix/settings/group_selectors.h"

#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "language/group_definition.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/list_kinds.h"
#include "language/options.h"
#include "language/value_condition.h"
#include "matrix/character_steps.h"
#include "matrix/hooks.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

bool is_discrete(const character_record& record) {
  return (record.type & (numeric_data | dna_data | protein_data)) != 0;
}

struct type_selector {
  std::string_view name;
  bool (*holds)(const character_record& record);
};
using record_type = const character_record&;
bool has_dimensions(const character_record& record, int dimensions) {
  const landmark_configuration* const found =
      find_configuration(matrix.landmarks, static_cast<int>(&record - matrix.characters.data()));
  return found && found->dimensions == dimensions;
}

// A character of one dimension is a continuous one.
constexpr type_selector type_selectors[] = {
    {"num", [](record_type r) { return r.type == numeric_data; }},
    {"dna", [](record_type r) { return r.type == dna_data; }},
    {"prot", [](record_type r) { return r.type == protein_data; }},
    {"cont", [](record_type r) { return r.type == continuous_data; }},
    {"1d", [](record_type r) { return r.type == continuous_data; }},
    {"2d", [](record_type r) { return has_dimensions(r, 2); }},
    {"3d", [](record_type r) { return has_dimensions(r, 3); }},
    {"land", [](record_type r) { return r.type == landmark_data; }},
    {"add", [](record_type r) { return is_discrete(r) && r.additive && !r.is_sankoff; }},
    {"nonadd", [](record_type r) { return is_discrete(r) && !r.additive && !r.is_sankoff; }},
    {"sank", [](record_type r) { return r.is_sankoff != 0; }},
    {"disc", is_discrete},
};

void select_type(std::span<std::uint8_t> selected) {
  if (!accept_char('=')) error_end("String \"type\" must be followed by = symbol");
  std::string word;
  for (int c = skip_blanks_peek();
       (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
       c = peek_char()) {
    word.push_back(static_cast<char>(read_char()));
  }
  std::vector<std::string_view> names;
  for (const type_selector& type : type_selectors) names.push_back(type.name);
  const int type = find_keyword(word, names, true);
  if (type < 0) error_end("Unrecognized type of characters:", word);
  for (int c = 0; c < matrix.nchar; ++c) {
    selected[at(c)] = type_selectors[type].holds(matrix.characters[at(c)]);
  }
}

void select_steps(std::string_view word, std::span<std::uint8_t> selected) {
  const value_condition wanted = read_condition(word);
  recheck_steps();
  for (int c = 0; c < matrix.nchar; ++c) {
    const length_range range = lengths_over_active_taxa(c);
    selected[at(c)] = wanted.holds(word == "min" ? range.least : range.most);
  }
}

void select_on_tree(tree_measure measure, std::string_view word, std::span<std::uint8_t> selected) {
  const int tree = read_int();
  if (tree < 0) error_end("Must give the number of a tree after", word);
  const value_condition wanted = read_condition(word);
  if (!hooks_of_matrix.measure_characters) {
    error_end("Characters can't be selected by their values on trees yet");
  }
  std::vector<double> values(at(matrix.nchar));
  hooks_of_matrix.measure_characters(measure, tree, values);
  for (int c = 0; c < matrix.nchar; ++c) selected[at(c)] = wanted.holds(values[at(c)]);
}

}  // namespace

bool select_characters(std::string_view word, std::span<std::uint8_t> selected) {
  if (word == "type") {
    select_type(selected);
  } else if (word == "min" || word == "max") {
    select_steps(word, selected);
  } else if (word == "len") {
    select_on_tree(tree_measure::steps, word, selected);
  } else if (word == "homo") {
    select_on_tree(tree_measure::homoplasy, word, selected);
  } else if (word == "score") {
    select_on_tree(tree_measure::score, word, selected);
  } else {
    return false;
  }
  return true;
}

}  // namespace zeb
