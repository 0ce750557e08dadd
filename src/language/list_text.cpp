#include "language/list_text.h"

#include "base/text_columns.h"

namespace zeb {

std::vector<std::string> list_items(int count, const std::function<bool(int)>& holds) {
  std::vector<std::string> items;
  for (int e = 0; e < count; ++e) {
    if (!holds(e)) continue;
    int last = e;
    while (last + 1 < count && holds(last + 1)) ++last;
    if (last - e >= 2) {
      items.push_back(std::to_string(e) + "." + std::to_string(last));
      e = last;
    } else {
      items.push_back(std::to_string(e));
    }
  }
  return items;
}

std::string wrapped_words(const std::vector<std::string>& words, std::size_t column) {
  constexpr std::size_t width = 79;
  constexpr std::size_t indent = 3;  // and the blank in front of the word
  std::string text;
  for (const std::string& word : words) {
    const auto columns = static_cast<std::size_t>(text_columns(word));
    if (column > indent && column + 1 + columns > width) {
      text += "\n" + std::string(indent, ' ');
      column = indent;
    }
    text += " " + word;
    column += 1 + columns;
  }
  return text;
}

}  // namespace zeb
