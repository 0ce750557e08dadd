// The options of search commands, as data: one table a command, one reader for all.
#pragma once

#include <initializer_list>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include "base/errors.h"
#include "language/interpreter.h"
#include "language/lexer.h"

namespace zeb {

/// What the text behind a search command asks for.
enum class option_outcome {
  run,   // "cmd;", "cmd=opts;", "cmd N;"
  set,   // "cmd:opts;": options were set, don't run
  list,  // "cmd=;" or "cmd:;": show the settings, don't run
};

struct option_range {
  int lowest = 0;
  int highest = std::numeric_limits<int>::max();
};

/// One keyword of a search command. `settings` is the command's struct of settings.
template <class settings>
struct search_option {
  std::string_view keyword;
  enum class argument { none, number, optional_number, real, action } kind;
  int settings::*integer = nullptr;  // number, optional_number
  double settings::*real = nullptr;
  bool settings::*flag = nullptr;  // none: "key" sets it, "nokey" clears it
  bool flag_value = true;
  option_range range{};
  std::string_view missing = {};    // error for a missing, negative or non-numeric argument
  const char* too_large = nullptr;  // format with one %i for a value above the range
  int default_number = 0;           // optional_number: the value without a number; also for "nokey"
  bool has_negative = true;         // "nokey" is a word too
  void (*apply)(settings&,
                int) = nullptr;  // action, and after any assignment: gets the number or the flag
};

template <class settings>
constexpr search_option<settings> toggle(std::string_view keyword, bool settings::*flag) {
  return {.keyword = keyword, .kind = search_option<settings>::argument::none, .flag = flag};
}
template <class settings>
constexpr search_option<settings> number(std::string_view keyword, int settings::*member,
                                         option_range range, std::string_view missing,
                                         const char* too_large = nullptr) {
  return {.keyword = keyword,
          .kind = search_option<settings>::argument::number,
          .integer = member,
          .range = range,
          .missing = missing,
          .too_large = too_large};
}
template <class settings>
constexpr search_option<settings> action(std::string_view keyword, void (*apply)(settings&, int)) {
  return {.keyword = keyword, .kind = search_option<settings>::argument::action, .apply = apply};
}
/// An action without "nokey": one of several ways.
template <class settings>
constexpr search_option<settings> choice(std::string_view keyword, void (*apply)(settings&, int)) {
  search_option<settings> option = action(keyword, apply);
  option.has_negative = false;
  return option;
}

/// Index of the option that `word` names by prefix, with `negated` set for "no" + keyword; keywords
/// that themselves begin with "no" win. -1 for none. Approximate matching asks when it is on.
int find_option(std::string_view word, std::span<const std::string_view> keywords, bool* negated);

/// Reads everything up to ";" into `target`. `unknown_format` is the error for an unknown word,
/// with one %s. `wrong_argument_format` is the error for another character behind the command word,
/// with one %c. `bare_number` (may be null) is the member that "cmd N;" sets.
template <class settings>
option_outcome read_search_options(settings& target,
                                   std::span<const search_option<settings>> options,
                                   const char* unknown_format, const char* wrong_argument_format,
                                   const search_option<settings>* bare_number = nullptr);

}  // namespace zeb

#include "language/options_impl.h"
