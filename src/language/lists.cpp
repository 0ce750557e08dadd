#include "language/lists.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>

#include "base/errors.h"
#include "base/number_text.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/lexer.h"

namespace zeb {
namespace {

constexpr std::int64_t no_number = std::numeric_limits<std::int64_t>::min();

bool is_one_of(int c, std::string_view set) {
  return c > 0 && c < 128 && set.find(static_cast<char>(c)) != std::string_view::npos;
}

bool starts_number(int c) { return std::isdigit(c) || (c == '(' && macros_on()); }

/// What may follow the beginning of a name.
std::string read_rest_of_name() {
  std::string text;
  int c = read_char();
  for (; c > 32 && c < 256 && (name_chars[static_cast<std::size_t>(c)] || std::isdigit(c));
       c = read_char()) {
    text.push_back(static_cast<char>(c));
  }
  unread_char();
  return text;
}

bool starts_name(int c) {
  return c > 32 && c < 256 && name_chars[static_cast<std::size_t>(c)] && !is_one_of(c, "+-.");
}

/// Characters up to a blank or one of "&/;<=>\\]".
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

/// A variable or function in place of a number from 0 to `count` - 1; -1 for other words and
/// values.
int number_of_word(std::string_view word, int count) {
  double value = 0;
  if (!hooks_of_language.macros.number_of_word ||
      !hooks_of_language.macros.number_of_word(word, false, &value))
    return -1;
  return value >= 0 && value < count ? static_cast<int>(value) : -1;
}

}  // namespace

void read_descendants(std::span<std::uint8_t> marks) {
  const int tree = read_int();
  const int node = read_int();
  if (!hooks_of_language.flag_descendants) error_end("Lists by node (\"@T N\") need trees");
  hooks_of_language.flag_descendants(tree, node, marks);
}

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

bool starts_list_item(int c) { return starts_number(c) || starts_name(c) || is_one_of(c, ".:{"); }

list_reader::list_reader(unsigned flags, int first, int end, const list_kind& kind,
                         std::span<std::uint8_t> marks)
    : flags_(flags), first_(first), end_(std::max(first, end)), kind_(kind), marks_(marks) {
  ALWAYS_CHECK(first >= 0 && static_cast<std::size_t>(end_) <= marks.size(), "list range");
  enter_block(0);
}

void list_reader::enter_block(int block) {
  block_ = block;
  base_ = 0;
  lowest_ = first_;
  limit_ = end_;
  if (block == 0) return;
  int block_first = 0;
  int block_end = 0;
  if (!kind_.block_range || !kind_.block_range(block, &block_first, &block_end)) return;
  base_ = block_first;
  lowest_ = std::clamp(block_first, first_, end_);
  limit_ = std::clamp(block_end, lowest_, end_);
}

bool list_reader::read() {
  bool any = false;
  while (true) {
    const int c = skip_blanks_peek();
    if (is_one_of(c, "&/;<=>\\]")) return any;
    if ((flags_ & list_bracket_ends) && c == '[') return any;
    if ((flags_ & list_ends_at_signs) && is_one_of(c, "+-()[*@")) return any;
    if ((flags_ & list_ends_at_plus_minus) && is_one_of(c, "+-")) return any;
    read_item_at(c);
    any = true;
  }
}

void list_reader::set_all(const std::vector<int>& elements) {
  for (int element : elements) set(element);
}

void list_reader::expected_another() const {
  if (kind_.name) error_end("Expected a", kind_.noun, "name");
  error_end("Expecting", kind_.noun, "number");
}

void list_reader::read_item_at(int c) {
  if (starts_number(c) || c == '.') return read_numbers();
  switch (c) {
    case '+':
    case '-':
      read_char();
      adding_ = c == '+';
      return;
    case ':':
      return read_containing();
    case '{':
      return read_groups();
    case '@':
      return read_at();
    default:
      return read_named();
  }
}

/// The element that the user's number stands for; an error where there is none.
int list_reader::element_of(std::int64_t number) const {
  const std::int64_t element = number + base_;
  if (number < 0 || element < lowest_ || element >= limit_) {
    if (block_) error_end("No", kind_.noun, number, "in block", block_);
    if (flags_ & list_in_tree_buffer) {
      error_end("Tree-buffer has", end_, end_ == 1 && (flags_ & list_one_tree) ? "tree" : "trees");
    }
    error_end("No", kind_.noun, number);
  }
  return static_cast<int>(element);
}

/// Digits, or under the macro language an expression, a variable or a function; `no_number` where
/// none comes next. Digits that run into letters, and words that stand for no number, are the
/// beginning of a name: `word` then gets all of it.
std::int64_t list_reader::read_number(std::string* word) {
  int c = peek_char();
  if (word && hooks_of_language.macros.number_of_word && std::isalpha(c))
    return read_word_number(word);
  if (!starts_number(c)) return no_number;
  if (c == '(') return read_int();
  constexpr std::int64_t too_large = 1'000'000'000'000'000;
  std::int64_t number = 0;
  std::string text;
  for (c = read_char(); std::isdigit(c); c = read_char()) {
    number = std::min(too_large, number * 10 + (c - '0'));
    text.push_back(static_cast<char>(c));
  }
  unread_char();
  const bool begins_name = word && kind_.name && (std::isalpha(c) || c == '_');
  if (begins_name) *word = text + read_rest_of_name();
  if (number == too_large && !begins_name) error_end("Number too large:", text);
  return number;
}

/// What a variable or function of that name stands for; `no_number` where it is neither.
std::int64_t list_reader::number_of_word(std::string_view word) const {
  double value = 0;
  if (!hooks_of_language.macros.number_of_word ||
      !hooks_of_language.macros.number_of_word(word, kind_.name && is_whole_name(word), &value)) {
    return no_number;
  }
  constexpr double too_large = 1e15;
  return std::isnan(value) ? -1
                           : static_cast<std::int64_t>(std::clamp(value, -too_large, too_large));
}

/// A word of letters, digits and "_" is what a variable or function may be called. Where it is
/// neither, `word` gets it, with what follows of a name of an element.
std::int64_t list_reader::read_word_number(std::string* word) {
  std::string text;
  int c = read_char();
  for (; std::isalnum(c) || c == '_'; c = read_char()) {
    if (static_cast<int>(text.size()) >= std::max(lexer.name_limit, 50)) error_end("Name too long");
    text.push_back(static_cast<char>(c));
  }
  unread_char();
  const std::int64_t number = number_of_word(text);
  if (number != no_number) return number;
  text += read_rest_of_name();
  *word = text;
  return no_number;
}

bool list_reader::is_whole_name(std::string_view word) const {
  for (int element = lowest_; element < limit_; ++element) {
    const std::string_view name = kind_.name(element);
    if (name.size() == word.size() && is_prefix(word, name)) return true;
  }
  return false;
}

/// In "1-10" the sign takes 10 out, or whatever it means to the command.
void list_reader::warn_of_sign_in_range(std::int64_t from) const {
  if (peek_char() != '-') return;
  read_char();
  const bool number_follows = std::isdigit(peek_char());
  unread_char();
  if (!number_follows) return;
  warning_f("\"-\" between numbers isn't a range: \"%i.N\" is from %s %i to N",
            static_cast<int>(from), std::string(kind_.noun).c_str(), static_cast<int>(from));
}

/// N, N.M, N., .M and ".", with the step of a range; or a name that begins with digits, or with
/// letters that might have been a variable's.
void list_reader::read_numbers() {
  std::string word;
  const std::int64_t from = read_number(&word);
  if (!word.empty()) return read_item_from(word);
  if (peek_char() != '.') {
    set(element_of(from));
    warn_of_sign_in_range(from);
    return;
  }
  read_char();
  const std::int64_t to = read_number(std::isalpha(peek_char()) ? &word : nullptr);
  const int last = to == no_number ? limit_ - 1 : element_of(to);
  const int start = from == no_number ? lowest_ : element_of(from);
  set_range(start, last, word.empty() ? read_step() : 1);
  if (!word.empty()) read_item_from(word);
}

/// A range given backwards is the same range.
void list_reader::set_range(int from, int to, int step) {
  for (std::int64_t e = std::min(from, to); e <= std::max(from, to); e += step) {
    if (e >= lowest_ && e < limit_) set(static_cast<int>(e));
  }
}

int list_reader::read_step() {
  if ((flags_ & list_slash_ends) || peek_char() != '/') return 1;
  read_char();
  if (!starts_number(peek_char())) {
    unread_char();
    return 1;
  }
  const std::int64_t step = read_number(nullptr);
  if (step <= 0) error_end("Zap must be > 0");
  return static_cast<int>(std::min<std::int64_t>(step, 1'000'000'000));
}

/// A range in one word, "a.b" or "a.", that begins with a variable or function. False for others.
bool list_reader::read_range_in(std::string_view word) {
  const std::size_t point = word.find('.');
  if (point == std::string_view::npos) return false;
  const std::int64_t from = number_of_word(word.substr(0, point));
  if (from == no_number) return false;
  int last = limit_ - 1;
  if (const std::string_view end = word.substr(point + 1); !end.empty()) {
    const std::optional<int> written = whole_of<int>(end);
    const std::int64_t to = written.value_or(-1) >= 0 ? *written : number_of_word(end);
    if (to == no_number) return false;
    last = element_of(to);
  }
  set_range(element_of(from), last, 1);
  return true;
}

void list_reader::read_item_from(std::string_view word) {
  const std::int64_t number = number_of_word(word);
  if (number != no_number) return set(element_of(number));
  if (read_range_in(word)) return;
  if (!kind_.name) error_end("Expecting", kind_.noun, "number");
  if (kind_.special_word) {
    const int element = kind_.special_word(word);
    if (element >= lowest_ && element < limit_) {
      set(element);
      return;
    }
  }
  const std::vector<int> found = elements_named(kind_, lowest_, limit_, word);
  if (found.empty()) {
    if (block_) error_end("No", kind_.noun, "named", word, "in block", block_);
    error_end("No", kind_.noun, "named", word);
  }
  set_all(found);
}

void list_reader::read_named() {
  if (hooks_of_language.macros.number_of_word && std::isalpha(skip_blanks_peek()))
    return read_numbers();
  if (!kind_.name) error_end("Expecting", kind_.noun, "number");
  if (read_name() == 0) expected_another();
  read_item_from(std::string(token()));
}

void list_reader::read_containing() {
  read_char();
  if (!kind_.name) error_end("Expecting", kind_.noun, "number");
  const std::string text = read_list_text();
  if (text.empty()) expected_another();
  const std::vector<int> found = elements_containing(kind_, lowest_, limit_, text);
  if (found.empty()) error_end("No", kind_.noun, "named", text);
  set_all(found);
}

void list_reader::read_groups() {
  if (!kind_.group_count) expected_another();
  read_char();
  std::vector<std::uint8_t> groups(static_cast<std::size_t>(kind_.group_count()));
  read_group_references(kind_, groups);
  for (int group = 0; group < kind_.group_count(); ++group) {
    if (!groups[static_cast<std::size_t>(group)]) continue;
    for (int element = lowest_; element < limit_; ++element) {
      if (kind_.in_group(element, group)) set(element);
    }
  }
}

void list_reader::read_at() {
  read_char();
  if (kind_.block_range) {
    enter_block(read_block_reference(kind_));
    return;
  }
  if (kind_.noun != "taxon") {
    error_end("@ can be used only in reference to taxa or characters");
  }
  std::vector<std::uint8_t> below(static_cast<std::size_t>(kind_.count()));
  read_descendants(below);
  for (int element = lowest_; element < limit_; ++element) {
    if (below[static_cast<std::size_t>(element)]) set(element);
  }
}

bool read_list(unsigned flags, int first, int end, std::string_view kind,
               std::span<std::uint8_t> marks, int block) {
  end = std::max(first, end);
  ALWAYS_CHECK(first >= 0 && static_cast<std::size_t>(end) <= marks.size(), "list range");
  std::fill(marks.begin() + first, marks.begin() + end, std::uint8_t{0});
  list_reader list(flags, first, end, find_list_kind(kind), marks);
  list.enter_block(block);
  return list.read();
}

}  // namespace zeb
