#include "language/taxon_reference.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <unordered_map>

#include "base/errors.h"
#include "base/number_text.h"
#include "base/text_columns.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/lists.h"

namespace zeb {
namespace {

/// Taxa by their whole name, for trees of thousands of names. What it says is checked against the
/// name before it is believed, so that it needn't know when names change.
struct name_index {
  std::unordered_map<std::string, int> index;
};
name_index taxa_by_name;

/// Names in tree files may hold whatever a matrix row's name may: all up to a blank or a character
/// that has a meaning in trees and commands.
std::string read_reference_word() {
  constexpr std::string_view ends = "(),;=*{}@<>[]&\\";
  std::string word;
  while (true) {
    const int c = read_char();
    if (c < 33 || (c < 128 && ends.find(static_cast<char>(c)) != std::string_view::npos)) break;
    word.push_back(static_cast<char>(c));
    if (static_cast<int>(word.size()) > std::max(lexer.name_limit, 2000)) {
      error_end("Name too long");
    }
  }
  unread_char();
  return normal_form(word);
}

void mark_all(const std::vector<int>& elements, std::span<std::uint8_t> marks) {
  for (int element : elements) marks[static_cast<std::size_t>(element)] = 1;
}

bool same_word(std::string_view a, std::string_view b) {
  return a.size() == b.size() && is_prefix(a, b);
}

/// The taxon of exactly this name according to the index; -1 where the index doesn't know.
int indexed_taxon(const list_kind& kind, const std::string& word) {
  const auto found = taxa_by_name.index.find(word);
  if (found == taxa_by_name.index.end() || found->second >= kind.count()) return -1;
  return kind.name(found->second) == word ? found->second : -1;
}

void rebuild_index(const list_kind& kind) {
  taxa_by_name.index.clear();
  for (int taxon = 0; taxon < kind.count(); ++taxon) {
    taxa_by_name.index.emplace(kind.name(taxon), taxon);
  }
}

/// Trees name taxa: a variable or function comes in only where no taxon is called so. -1 for none.
int taxon_of_variable(const std::string& word, int count) {
  double value = 0;
  if (!hooks_of_language.macros.number_of_word ||
      !hooks_of_language.macros.number_of_word(word, false, &value))
    return -1;
  if (!(value >= 0 && value < count)) error_end("Error: no taxon", word);
  return static_cast<int>(value);
}

/// By the whole name, then the whole name in whatever case, then the beginning of the name.
int taxon_named(const list_kind& kind, const std::string& word) {
  const int indexed = indexed_taxon(kind, word);
  if (indexed >= 0) return indexed;
  const std::vector<int> found = elements_named(kind, 0, kind.count(), word);
  if (found.empty()) {
    const int number = taxon_of_variable(word, kind.count());
    if (number < 0) error_end("Unidentified taxon name:", word);
    return number;
  }
  for (int element : found) {
    if (kind.name(element) != word) continue;
    rebuild_index(kind);
    return element;
  }
  for (int element : found) {
    if (same_word(word, kind.name(element))) return element;
  }
  return found.front();
}

/// Members of the groups that a "{...}" names, from after its "{".
void read_members(const list_kind& kind, std::span<std::uint8_t> marks) {
  std::vector<std::uint8_t> groups(static_cast<std::size_t>(kind.group_count()));
  read_group_references(kind, groups);
  for (int group = 0; group < kind.group_count(); ++group) {
    if (!groups[static_cast<std::size_t>(group)]) continue;
    for (int taxon = 0; taxon < kind.count(); ++taxon) {
      if (kind.in_group(taxon, group)) marks[static_cast<std::size_t>(taxon)] = 1;
    }
  }
}

}  // namespace

int taxon_of_word(const std::string& word, std::span<std::uint8_t> marks) {
  const list_kind& kind = find_list_kind("taxon");
  const int count = kind.count();
  if (word.size() > 3 && word.ends_with("...")) {
    const std::string prefix = word.substr(0, word.size() - 3);
    const std::vector<int> found = elements_named(kind, 0, count, prefix);
    if (found.empty()) error_end("No name contains", prefix);
    mark_all(found, marks);
    return -1;
  }
  if (word.empty()) {
    error_end("Unidentified taxon name:", static_cast<char>(std::max(peek_char(), 32)));
  }
  if (std::all_of(word.begin(), word.end(), [](unsigned char c) { return std::isdigit(c); })) {
    const int number = whole_of<int>(word).value_or(-1);
    if (number < 0 || number >= count) error_end("Error: no taxon", word);
    return number;
  }
  return taxon_named(kind, word);
}

int read_taxon(std::span<std::uint8_t> marks) {
  const list_kind& kind = find_list_kind("taxon");
  const int count = kind.count();
  ALWAYS_CHECK(static_cast<std::size_t>(count) <= marks.size(), "taxon marks");
  std::fill(marks.begin(), marks.end(), std::uint8_t{0});
  switch (skip_blanks_peek()) {
    case '(': {
      const int number = macros_on() ? read_int() : -1;
      if (number < 0 || number >= count) error_end("Error: no taxon", number);
      return number;
    }
    case ':': {
      read_char();
      const std::string text = read_reference_word();
      const std::vector<int> found = elements_containing(kind, 0, count, text);
      if (text.empty() || found.empty()) error_end("No name contains", text);
      return found.front();
    }
    case '{':
      read_char();
      read_members(kind, marks);
      return -1;
    case '@':
      read_char();
      read_descendants(marks);
      return -1;
    default:
      return taxon_of_word(read_reference_word(), marks);
  }
}

}  // namespace zeb
