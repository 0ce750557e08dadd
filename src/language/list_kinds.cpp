#include "language/list_kinds.h"

#include <algorithm>
#include <cctype>

#include "base/errors.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/name_matching.h"

namespace zeb {

list_registry lists;
list_word_source list_words;

void register_list_kind(const list_kind& kind) {
  for (list_kind& known : lists.kinds) {
    if (known.noun == kind.noun) {
      known = kind;
      return;
    }
  }
  lists.kinds.push_back(kind);
}

const list_kind& find_list_kind(std::string_view noun) {
  for (const list_kind& kind : lists.kinds) {
    if (kind.noun == noun) return kind;
  }
  error_end("Lists of the kind", noun, "are not available");
}

void set_descendant_marker(descendant_marker marker) { lists.mark_descendants = marker; }
void set_fixed_list_source(fixed_list_source source) { lists.fixed_list = source; }

bool contains_ignoring_case(std::string_view name, std::string_view text) {
  const auto same = [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  };
  return std::search(name.begin(), name.end(), text.begin(), text.end(), same) != name.end();
}

namespace {

template <class predicate>
std::vector<int> elements_where(const list_kind& kind, int first, int end, predicate wanted) {
  std::vector<int> found;
  for (int element = first; element < end; ++element) {
    const std::string_view name = kind.name(element);
    if (!name.empty() && wanted(name)) found.push_back(element);
  }
  return found;
}

}  // namespace

std::vector<int> elements_named(const list_kind& kind, int first, int end, std::string_view word) {
  const auto begins = [&word](std::string_view name) { return is_prefix(word, name); };
  std::vector<int> found = elements_where(kind, first, end, begins);
  if (!found.empty()) return found;
  std::string stored(word);
  std::replace_if(
      stored.begin(), stored.end(), [](char c) { return c == '+' || c == '-' || c == '/'; }, '_');
  if (stored != word) {
    found = elements_where(kind, first, end,
                           [&stored](std::string_view name) { return is_prefix(stored, name); });
    if (!found.empty()) return found;
  }
  if (matching.match_mode == 0) return found;
  for (int element = first; element < end; ++element) {
    const std::string_view name = kind.name(element);
    if (!name.empty() && ask_match(word, name, kind.noun)) return {element};
  }
  return found;
}

std::vector<int> elements_containing(const list_kind& kind, int first, int end,
                                     std::string_view text) {
  return elements_where(kind, first, end, [text](std::string_view name) {
    return contains_ignoring_case(name, text);
  });
}

void read_descendants(std::span<std::uint8_t> marks) {
  const int tree = read_int();
  const int node = read_int();
  if (!lists.mark_descendants) error_end("Lists by node (\"@T N\") need trees");
  lists.mark_descendants(tree, node, marks);
}

int peek_char() {
  const int c = read_char();
  unread_char();
  return c;
}

std::string read_list_text() {
  constexpr std::string_view terminators = "&/;<=>\\]";
  std::string text;
  while (true) {
    const int c = read_char();
    if (c < 33 || terminators.find(static_cast<char>(c)) != std::string_view::npos) break;
    text.push_back(static_cast<char>(c));
  }
  unread_char();
  return text;
}

namespace {

/// A variable or function in place of a number from 0 to `count` - 1; -1 for other words and
/// values.
int number_of_word(std::string_view word, int count) {
  double value = 0;
  if (!list_words.number_of || !list_words.number_of(word, false, &value)) return -1;
  return value >= 0 && value < count ? static_cast<int>(value) : -1;
}

}  // namespace

int read_block_reference(const list_kind& kind) {
  const int blocks = kind.block_count();
  const int c = skip_blanks_peek();
  if (std::isdigit(c) || c == '(') {
    const int block = read_int();
    if (block < 0 || block > blocks) error_end("Only valid blocks are 0 -", blocks);
    return block;
  }
  if (c < 0 || c > 255 || !name_chars[static_cast<std::size_t>(c)] || read_name() == 0) {
    error_end("Must give a block number ( 0 -", blocks, ")");
  }
  const int block = kind.block_named(token());
  if (block >= 0) return block;
  const int number = number_of_word(token(), blocks + 1);
  if (number < 0) error_end("No block named", token());
  return number;
}

void read_group_references(const list_kind& kind, std::span<std::uint8_t> groups) {
  std::fill(groups.begin(), groups.end(), std::uint8_t{0});
  const int count = kind.group_count();
  bool any = false;
  while (true) {
    const int c = skip_blanks_peek();
    if (c == '}') break;
    any = true;
    if (c == ';') error_end("Unexpected semicolon within brackets");
    if (std::isdigit(c) || c == '(') {
      const int group = read_int();
      if (group < 0 || group >= count) error_end("No", kind.noun, "group named", group);
      groups[static_cast<std::size_t>(group)] = 1;
      continue;
    }
    if (c > 255 || !name_chars[static_cast<std::size_t>(c)]) {
      error_end("Found allien character within brackets");
    }
    read_name();
    bool found = false;
    for (int exact = 1; exact >= 0 && !found; --exact) {
      for (int group = 0; group < count; ++group) {
        if (!kind.group_defined(group)) continue;
        const std::string_view name = kind.group_name(group);
        if (!is_prefix(token(), name) || (exact && name.size() != token().size())) continue;
        groups[static_cast<std::size_t>(group)] = 1;
        found = true;
      }
    }
    if (found) continue;
    const int group = number_of_word(token(), count);
    if (group < 0) error_end("No", kind.noun, "group named", token());
    groups[static_cast<std::size_t>(group)] = 1;
  }
  if (!any) error_end("No", kind.noun, "group named");
  read_char();
}

}  // namespace zeb
