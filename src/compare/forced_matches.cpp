#include "compare/forced_matches.h"

#include <algorithm>
#include <charconv>
#include <sstream>

#include "base/errors.h"
#include "base/input_file.h"
#include "base/message_text.h"
#include "language/lexer.h"

namespace zeb {
namespace {

[[noreturn]] void refuse(const std::string& file, const std::string& what) {
  error_end(text_of("Sorry, error in list of taxa/characters (%s)", file.c_str()) + ": " + what);
}

std::string text_of_file(const std::string& name) {
  input_file file;
  if (!file.open(name)) error_end(text_of("Can't open file %s", name.c_str()) + file.cause());
  std::string text = file.rest();
  // "3!4" is read as "3 ! 4".
  for (std::size_t i = text.find('!'); i != std::string::npos; i = text.find('!', i + 3))
    text.replace(i, 1, " ! ");
  return text;
}

int number_below(const std::string& word, int end, const std::string& file) {
  int number = -1;
  const auto result = std::from_chars(word.data(), word.data() + word.size(), number);
  if (result.ec != std::errc{} || result.ptr != word.data() + word.size()) {
    refuse(file, "\"" + word + "\" isn't a number");
  }
  if (number < 0 || number >= end) refuse(file, "there is no number " + word);
  return number;
}

}  // namespace

forced_matches read_forced_matches(const std::string& file, const data_set& first,
                                   const data_set& second) {
  forced_matches found;
  std::vector<forced_pair>* list = nullptr;
  std::istringstream text(text_of_file(file));
  const auto end = [&](const data_set& data) {
    return list == &found.taxa ? data.ntax() : data.nchar();
  };
  for (std::string word; text >> word && word != ";";) {
    if (word.front() == '*') {
      const std::string head = word.substr(1);
      if (!is_prefix(head, "taxa") && !is_prefix(head, "characters"))
        refuse(file, "\"" + word + "\" is neither *taxa nor *characters");
      list = is_prefix(head, "taxa") ? &found.taxa : &found.characters;
      continue;
    }
    if (!list) refuse(file, "numbers stand before *taxa or *characters");
    forced_pair pair{number_below(word, end(first), file), 0, true};
    if (!(text >> word)) refuse(file, "a pair lacks its second number");
    if (word == "!") {
      pair.same = false;
      if (!(text >> word)) refuse(file, "a pair lacks its second number");
    }
    pair.second = number_below(word, end(second), file);
    if (list == &found.characters && !are_of_one_kind(first, pair.first, second, pair.second))
      refuse(file,
             "characters " + std::to_string(pair.first) + " and " + word + " aren't of one type");
    const auto clashes = [&pair](const forced_pair& other) {
      return (other.first == pair.first || other.second == pair.second) &&
             ((other.same && pair.same) ||
              (other.first == pair.first && other.second == pair.second));
    };
    if (std::ranges::any_of(*list, clashes)) refuse(file, "a number stands in two pairs");
    list->push_back(pair);
  }
  return found;
}

}  // namespace zeb
