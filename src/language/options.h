// The keywords of commands, as data: one constant table for each command, one reader for all.
//
// A row names a member of the command's struct of settings, so that the default stands once, in the
// struct. The rows of a table are of one type whatever the struct is; the struct's type is known to
// the two small functions by which a row reads and writes its member.
//
//   constexpr command_options ratchet_rows = {
//       number<&ratchet_settings::iterations>("iterations", {0, 100000},
//                                             "Give number of rat iterations",
//                                             "Can't do %i ratchet iterations (max=100000)")
//           .help("cycles"),
//       toggle<&ratchet_settings::equals>("equals").help("include cycles with original weights"),
//   };
//   constexpr option_table ratchet_options = ratchet_rows.table(
//       "ratchet", {.unknown = "Unidentified string in ratchet options: %s",
//                   .wrong_sign = "Wrong argument for ratchet: %c"});
#pragma once

#include <array>
#include <concepts>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace zeb {

enum class option_kind : unsigned char {
  toggle,           // "key" sets the member, "nokey" clears it
  choice,           // "key" sets the member to a value: one of several ways
  number,           // "key N"
  optional_number,  // "key", "key N"
  real,             // "key X"
  optional_real,    // "key", "key X"
  text,             // "key any words", up to the semicolon, which is left unread
  form,             // "key" and what a function of the command reads after it
};

struct option_range {
  double lowest = 0;
  double highest = std::numeric_limits<int>::max();
};
constexpr option_range any_integer = {std::numeric_limits<int>::min(),
                                      std::numeric_limits<int>::max()};

/// A member of some struct of settings: flags, integers, enumerations and reals travel as a double,
/// which holds all of them exactly. Null functions: no member.
struct option_member {
  double (*get)(const void* settings) = nullptr;
  void (*set)(void* settings, double value) = nullptr;
};

/// A number that may follow the first one: "N x R", "J - K".
struct second_number {
  char separator = 0;  // 0: none; ' ': it just follows
  option_member member{};
  option_range range{};
  std::string_view missing = {};
  bool needed = false;
};

/// One keyword. Built by the functions below.
struct option_row {
  std::string_view keyword;  // a word, or one sign
  option_kind kind = option_kind::toggle;
  option_member member{};
  option_member twin{};                                   // takes the same number
  std::string& (*text_member)(void* settings) = nullptr;  // text
  void (*read_form)(void* settings) = nullptr;            // form
  bool negatable = false;                                 // "nokey" is a word too
  bool bare = false;                                      // the number of "command N;" is this one
  double value = 1;                                       // toggle, choice: what "key" sets
  double off = 0;                                         // what "nokey" sets
  double without = 0;                                     // optional numbers: what "key" alone sets
  bool keeps_without = false;  // ... or rather leaves the member as it was
  option_range range{};
  std::size_t longest_text = std::string_view::npos;
  second_number second{};
  struct fixed_value {
    option_member member{};
    double value = 0;
  };
  std::array<fixed_value, 2> also{};  // set together with the member
  std::size_t also_count = 0;
  // Errors. A text with "%i" gets the number.
  std::string_view missing = {};    // no number, or one that is too low; text: one too long
  std::string_view too_high = {};   // empty: `missing`
  bool tells_highest = false;       // the limit is added to the error of a number too high
  std::string_view argument = {};   // as shown in the help, such as "N[xR]"
  std::string_view help_text = {};  // one sentence without the full stop
};

namespace option_parts {

template <class struct_type, class member_type>
struct_type owner_of(member_type struct_type::*);

template <auto first, auto... rest, class settings>
constexpr auto& place(settings& s) {
  if constexpr (sizeof...(rest) == 0) {
    return s.*first;
  } else {
    return place<rest...>(s.*first);
  }
}

template <auto first, auto...>
struct first_owner {
  using type = decltype(owner_of(first));
};
template <auto... path>
using owner = typename first_owner<path...>::type;

/// Its address tells one struct of settings from another.
template <class settings>
inline constexpr char struct_tag = 0;

/// `path` leads through members that are structs themselves to the one meant.
template <auto... path>
constexpr option_member member() {
  using settings = owner<path...>;
  using member_type = std::remove_cvref_t<decltype(place<path...>(std::declval<settings&>()))>;
  static_assert(std::is_arithmetic_v<member_type> || std::is_enum_v<member_type>);
  return {[](const void* s) -> double {
            return static_cast<double>(place<path...>(*static_cast<const settings*>(s)));
          },
          [](void* s, double value) {
            member_type& m = place<path...>(*static_cast<settings*>(s));
            if constexpr (std::is_same_v<member_type, bool>) {
              m = value != 0;
            } else if constexpr (std::is_enum_v<member_type>) {
              m = static_cast<member_type>(static_cast<int>(value));
            } else {
              m = static_cast<member_type>(value);
            }
          }};
}

}  // namespace option_parts

/// A row of a table whose settings are a `settings_type`, and what may be added to it.
template <class settings_type>
struct option {
  using settings = settings_type;
  option_row row;

  /// "no" + keyword sets the member to `value`.
  constexpr option no(double value = 0) const {
    option changed = *this;
    changed.row.negatable = true;
    changed.row.off = value;
    return changed;
  }
  /// Another member is set to `value` at the same time, also by "nokey"; twice at most.
  template <auto... path>
  constexpr option also(double value) const {
    option changed = *this;
    // Counted, since the sanitizers' compiler can't compare a function's address in a constant.
    changed.row.also[changed.row.also_count++] = {option_parts::member<path...>(), value};
    return changed;
  }
  /// Another member takes the same number.
  template <auto... path>
  constexpr option with() const {
    option changed = *this;
    changed.row.twin = option_parts::member<path...>();
    return changed;
  }
  /// A second number may follow the separator; with `needed` it must.
  template <auto... path>
  constexpr option then(char separator, option_range range, std::string_view missing,
                        bool needed = false) const {
    option changed = *this;
    changed.row.second = {separator, option_parts::member<path...>(), range, missing, needed};
    return changed;
  }
  /// "command N;" sets this number.
  constexpr option bare() const {
    option changed = *this;
    changed.row.bare = true;
    return changed;
  }
  /// The error of a number too high names the limit.
  constexpr option tells_highest() const {
    option changed = *this;
    changed.row.tells_highest = true;
    return changed;
  }
  constexpr option argument(std::string_view shown) const {
    option changed = *this;
    changed.row.argument = shown;
    return changed;
  }
  constexpr option help(std::string_view text) const {
    option changed = *this;
    changed.row.help_text = text;
    return changed;
  }
};

/// "key" sets the flag, "nokey" clears it.
template <auto... path>
constexpr auto toggle(std::string_view keyword) {
  return option<option_parts::owner<path...>>{{.keyword = keyword,
                                               .kind = option_kind::toggle,
                                               .member = option_parts::member<path...>(),
                                               .negatable = true}};
}
/// One of several ways: "key" sets the member to `value`.
template <auto... path>
constexpr auto choice(std::string_view keyword, double value) {
  return option<option_parts::owner<path...>>{{.keyword = keyword,
                                               .kind = option_kind::choice,
                                               .member = option_parts::member<path...>(),
                                               .value = value}};
}
/// "key N". The text `missing` is also the error of numbers too low, and too high where `too_high`
/// isn't given.
template <auto... path>
constexpr auto number(std::string_view keyword, option_range range, std::string_view missing,
                      std::string_view too_high = {}) {
  return option<option_parts::owner<path...>>{{.keyword = keyword,
                                               .kind = option_kind::number,
                                               .member = option_parts::member<path...>(),
                                               .range = range,
                                               .missing = missing,
                                               .too_high = too_high}};
}
/// "key" sets the member to `without`, "key N" to N.
template <auto... path>
constexpr auto optional_number(std::string_view keyword, double without, option_range range,
                               std::string_view missing = {}, std::string_view too_high = {}) {
  auto made = number<path...>(keyword, range, missing, too_high);
  made.row.kind = option_kind::optional_number;
  made.row.without = without;
  return made;
}
template <auto... path>
constexpr auto real(std::string_view keyword, option_range range, std::string_view missing,
                    std::string_view too_high = {}) {
  auto made = number<path...>(keyword, range, missing, too_high);
  made.row.kind = option_kind::real;
  return made;
}
/// "key" leaves the member as it was, "key X" sets it.
template <auto... path>
constexpr auto optional_real(std::string_view keyword, option_range range,
                             std::string_view missing = {}, std::string_view too_high = {}) {
  auto made = number<path...>(keyword, range, missing, too_high);
  made.row.kind = option_kind::optional_real;
  made.row.keeps_without = true;
  return made;
}
/// Any words up to the semicolon, without the blanks around them.
template <auto... path>
constexpr auto text(std::string_view keyword, std::size_t longest, std::string_view too_long) {
  using owner = option_parts::owner<path...>;
  return option<owner>{{.keyword = keyword,
                        .kind = option_kind::text,
                        .text_member = [](void* s) -> std::string& {
                          return option_parts::place<path...>(*static_cast<owner*>(s));
                        },
                        .longest_text = longest,
                        .missing = too_long}};
}
/// What no other kind reads: `read` gets the settings, and reads what follows the keyword itself.
template <class settings>
settings form_owner(void (*)(settings&));
template <auto read>
constexpr auto form(std::string_view keyword) {
  using owner = decltype(form_owner(read));
  return option<owner>{{.keyword = keyword, .kind = option_kind::form, .read_form = [](void* s) {
                          read(*static_cast<owner*>(s));
                        }}};
}

/// The errors of words that aren't options.
struct option_errors {
  const char* unknown = nullptr;     // an unknown word; one %s
  const char* wrong_sign = nullptr;  // search commands: another sign than "=", ":", ";"; one %c
  const char* no_word = nullptr;     // no word at all; null: as an unknown word
};

/// A command's table, as the reader, the help and the tests see it.
struct option_table {
  std::string_view command;  // whose help tells the options
  std::span<const option_row> rows;
  option_errors errors;
  const char* struct_tag;              // tells the struct of settings
  const void* (*defaults)();           // a default-constructed struct of settings
  const option_table* next = nullptr;  // a further table of the command
  // The options by which settings that last differ from the defaults; null: no settings last.
  std::string (*changed)() = nullptr;

  constexpr option_table with_changes(std::string (*tell)()) const {
    option_table table = *this;
    table.changed = tell;
    return table;
  }
};

/// Holds the rows of a table; all are of one struct of settings.
template <class settings, std::size_t n>
struct command_options {
  std::array<option_row, n> rows{};

  template <std::same_as<option<settings>>... row>
  // NOLINTNEXTLINE(google-explicit-constructor): a list of rows stands for the table
  constexpr command_options(const row&... given) : rows{given.row...} {}

  constexpr option_table table(std::string_view name, option_errors errors,
                               const option_table* next = nullptr) const {
    return {name,
            rows,
            errors,
            &option_parts::struct_tag<settings>,
            []() -> const void* {
              static const settings standard;
              return &standard;
            },
            next,
            nullptr};
  }
};
template <class settings, std::same_as<option<settings>>... row>
command_options(const option<settings>&, const row&...)
    -> command_options<settings, 1 + sizeof...(row)>;

/// What the text after a search command asks for.
enum class option_outcome {
  run,   // "cmd;", "cmd=options;", "cmd N;"
  set,   // "cmd:options;": options were set, don't run
  list,  // "cmd=;" or "cmd:;": show the settings, don't run
};

/// The readers that don't know the struct; see below.
void read_option_into(void* settings, const option_table& table);
bool read_sign_into(void* settings, const option_table& table);
option_outcome read_search_options_into(void* settings, const option_table& table);
[[noreturn]] void refuse_struct(const option_table& table);

/// Reads one option, a word. For commands that don't have the form of searches: they give it a copy
/// of their settings and take that when all is read, so that an error leaves the settings as they
/// were.
template <class settings>
void read_option(settings& target, const option_table& table) {
  if (table.struct_tag != &option_parts::struct_tag<settings>) refuse_struct(table);
  read_option_into(&target, table);
}
/// The same for options that are a sign: false, and nothing read, where none of the table's comes
/// next.
template <class settings>
bool read_sign(settings& target, const option_table& table) {
  if (table.struct_tag != &option_parts::struct_tag<settings>) refuse_struct(table);
  return read_sign_into(&target, table);
}

/// Reads everything up to and over ";" into a copy. `check(copy, outcome)` sees the result before
/// it is taken: it raises the errors of options that can't go together.
template <class settings, class check>
option_outcome read_search_options(settings& target, const option_table& table, check&& rules) {
  if (table.struct_tag != &option_parts::struct_tag<settings>) refuse_struct(table);
  settings wanted = target;
  const option_outcome outcome = read_search_options_into(&wanted, table);
  rules(wanted, outcome);
  target = wanted;
  return outcome;
}
template <class settings>
option_outcome read_search_options(settings& target, const option_table& table) {
  return read_search_options(target, table, [](const settings&, option_outcome) {});
}

/// The row that `word` names by prefix, the first one in the order of the table; with `negated` for
/// "no" + keyword. A keyword that itself begins with "no" wins. Null for none. While options are
/// matched approximately, asks the user.
const option_row* find_option(std::string_view word, std::span<const option_row> rows,
                              bool* negated);
/// The same for plain words that aren't a table: the index, -1 for none. `whole`: words that
/// mustn't be cut.
int find_keyword(std::string_view word, std::span<const std::string_view> keywords,
                 bool whole = false);

/// How an option is told in the help: its form, its sentence and its default in brackets.
std::string option_help(const option_table& table, const option_row& row);

/// The options that set what differs from the defaults, as a user would write them; empty: nothing
/// does. Texts and what forms read are left out.
std::string changed_options_of(const void* settings, const option_table& table);
template <class settings>
std::string changed_options(const settings& now, const option_table& table) {
  if (table.struct_tag != &option_parts::struct_tag<settings>) refuse_struct(table);
  return changed_options_of(&now, table);
}

}  // namespace zeb
