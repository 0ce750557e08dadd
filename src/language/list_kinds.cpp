#include "language/list_kinds.h"

#include <algorithm>
#include <cctype>

#include "base/errors.h"
#include "base/text_columns.h"
#include "language/lexer.h"
#include "language/name_matching.h"

namespace zeb {

namespace {

struct list_registry {
  std::vector<list_kind> kinds;
};
list_registry lists;

}  // namespace

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

std::vector<int> elements_named(const list_kind& kind, int first, int end, std::string_view text) {
  const std::string word = normal_form(text);
  const auto begins = [&word](std::string_view name) { return is_prefix(word, name); };
  std::vector<int> found = elements_where(kind, first, end, begins);
  if (!found.empty()) return found;
  std::string stored = word;
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
  return elements_where(kind, first, end, [text = normal_form(text)](std::string_view name) {
    return contains_ignoring_case(name, text);
  });
}

}  // namespace zeb
