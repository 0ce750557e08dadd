#include "language/options.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <utility>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/name_matching.h"

namespace zeb {
namespace {

template <class name_at>
int first_match(std::string_view word, std::size_t count, const name_at& name) {
  for (std::size_t i = 0; i < count; ++i) {
    if (is_prefix(word, name(i))) return static_cast<int>(i);
  }
  return -1;
}

template <class name_at>
int asked_match(std::string_view word, std::size_t count, const name_at& name) {
  if (matching.match_mode != 1) return -1;
  const std::string typed(word);  // the question may use the token's place
  for (std::size_t i = 0; i < count; ++i) {
    if (ask_match(typed, name(i), "option")) return static_cast<int>(i);
  }
  return -1;
}

/// The number stands as it was typed, also where no int can hold it.
[[noreturn]] void refuse(std::string_view text, double value) {
  const std::size_t place = text.find("%i");
  if (place == text.npos) error_end(text);
  error_end(std::string(text.substr(0, place)) + text_of("%.0f", value) +
            std::string(text.substr(place + 2)));
}

[[noreturn]] void refuse_missing(const option_row& row) {
  if (row.missing.find("%i") == row.missing.npos) error_end(row.missing);
  error_end(text_of("Give number for \"%s\" (%.0f-%.0f)", std::string(row.keyword).c_str(),
                    row.range.lowest, row.range.highest));
}

void check_range(const option_row& row, double value) {
  if (value < row.range.lowest || std::isnan(value)) refuse(row.missing, value);
  if (value <= row.range.highest) return;
  if (row.tells_highest) {
    error_end(row.missing, "- at most", static_cast<int>(row.range.highest));
  }
  if (row.too_high.empty() && row.range.highest >= any_integer.highest) {
    error_end(text_of("Number too large: %.0f", value));
  }
  refuse(row.too_high.empty() ? row.missing : row.too_high, value);
}

void store(const option_row& row, void* settings, double value) {
  if (row.member.set) row.member.set(settings, value);
  if (row.twin.set) row.twin.set(settings, value);
}

void read_second(const option_row& row, void* settings) {
  const second_number& second = row.second;
  if (second.separator == 0) return;
  const bool follows = second.separator == ' ' || accept_char(second.separator);
  double value = 0;
  if (follows && read_optional_whole(&value)) {
    if (value < second.range.lowest || value > second.range.highest) error_end(second.missing);
    second.member.set(settings, value);
  } else if (second.needed || (follows && second.separator != ' ')) {
    error_end(second.missing);
  }
}

void read_numbers(const option_row& row, void* settings) {
  const bool whole = row.kind == option_kind::number || row.kind == option_kind::optional_number;
  const bool needed = row.kind == option_kind::number || row.kind == option_kind::real;
  double value = row.without;
  if (whole ? read_optional_whole(&value) : read_optional_float(&value)) {
    check_range(row, value);
  } else if (needed) {
    refuse_missing(row);
  } else if (row.keeps_without) {
    return;
  }
  store(row, settings, value);
  read_second(row, settings);
}

void read_words(const option_row& row, void* settings) {
  std::string words = read_text_to_semicolon();
  if (words.size() > row.longest_text) error_end(row.missing);
  row.text_member(settings) = std::move(words);
}

void apply(const option_row& row, void* settings, bool negated) {
  for (const option_row::fixed_value& fixed : row.also) {
    if (fixed.member.set) fixed.member.set(settings, fixed.value);
  }
  if (negated) return store(row, settings, row.off);
  switch (row.kind) {
    case option_kind::toggle:
    case option_kind::choice:
      return store(row, settings, row.value);
    case option_kind::number:
    case option_kind::optional_number:
    case option_kind::real:
    case option_kind::optional_real:
      return read_numbers(row, settings);
    case option_kind::text:
      return read_words(row, settings);
    case option_kind::form:
      return row.read_form(settings);
  }
}

/// Do the settings have what the keyword sets besides its own member?
bool sets_the_rest(const option_row& row, const void* settings) {
  return std::all_of(row.also.begin(), row.also.end(), [settings](const auto& fixed) {
    return !fixed.member.get || fixed.member.get(settings) == fixed.value;
  });
}

/// The number of "command N;".
void read_bare_number(void* settings, const option_table& table) {
  for (const option_row& row : table.rows) {
    double value = 0;
    if (!row.bare || !read_optional_whole(&value)) continue;
    check_range(row, value);
    store(row, settings, value);
    return;
  }
}

/// The default in brackets; empty where the keyword isn't the default among several ways, or has
/// none.
std::string default_text(const option_row& row, const void* defaults) {
  if (!row.member.get) return {};
  const double value = row.member.get(defaults);
  if (!sets_the_rest(row, defaults)) return {};
  switch (row.kind) {
    case option_kind::toggle:
      return value != 0 ? " [on]" : " [off]";
    case option_kind::choice:
      return value == row.value ? " [default]" : "";
    default:
      if (row.negatable && value == row.off) return " [off]";
      if (row.kind == option_kind::optional_number && !row.negatable) return {};
      if (value < row.range.lowest) return {};  // stands for no number
      break;
  }
  std::string text = " [" + exact_text(value);
  if (row.second.member.get) {
    text += row.second.separator + exact_text(row.second.member.get(defaults));
  }
  return text + "]";
}

/// The words that give the row's member the value that it has.
std::string words_of(const option_row& row, const void* settings) {
  std::string keyword(row.keyword);
  const double value = row.member.get(settings);
  if (row.kind == option_kind::toggle) return value == row.value ? keyword : "no" + keyword;
  if (row.kind == option_kind::choice) return keyword;
  if (row.negatable && value == row.off) return "no" + keyword;
  if (row.kind == option_kind::optional_number && value == row.without) return keyword;
  // Where one number means both, the first of two is the twin's.
  const bool two = row.second.member.get && row.twin.get;
  std::string text = keyword + " " + exact_text(two ? row.twin.get(settings) : value);
  if (row.second.member.get) {
    text += row.second.separator + exact_text(row.second.member.get(settings));
  }
  return text;
}

bool is_changed(const option_row& row, const void* settings, const void* defaults) {
  const bool is_word = std::isalpha(static_cast<unsigned char>(row.keyword[0]));
  if (!is_word || !row.member.get || !sets_the_rest(row, settings)) return false;
  const double value = row.member.get(settings);
  if (row.kind == option_kind::choice && value != row.value) return false;
  const auto differs = [&](const option_member& member) {
    return member.get && member.get(settings) != member.get(defaults);
  };
  return differs(row.member) ||
         (row.second.member.get && (differs(row.second.member) || differs(row.twin)));
}

std::string argument_text(const option_row& row) {
  if (!row.argument.empty()) return " " + std::string(row.argument);
  switch (row.kind) {
    case option_kind::number:
      return " N";
    case option_kind::optional_number:
      return " [N]";
    case option_kind::real:
      return " X";
    case option_kind::optional_real:
      return " [X]";
    case option_kind::text:
      return " text";
    default:
      return {};
  }
}

}  // namespace

const option_row* find_option(std::string_view word, std::span<const option_row> rows,
                              bool* negated) {
  const auto keyword = [rows](std::size_t i) { return rows[i].keyword; };
  *negated = false;
  int index = first_match(word, rows.size(), keyword);
  if (index < 0) {
    index = first_match(word, rows.size(), [rows](std::size_t i) {
      return rows[i].negatable ? "no" + std::string(rows[i].keyword) : std::string();
    });
    *negated = index >= 0;
  }
  if (index < 0) index = asked_match(word, rows.size(), keyword);
  return index < 0 ? nullptr : &rows[static_cast<std::size_t>(index)];
}

int find_keyword(std::string_view word, std::span<const std::string_view> keywords, bool whole) {
  const auto keyword = [keywords](std::size_t i) { return keywords[i]; };
  const int index = first_match(word, keywords.size(), [&](std::size_t i) {
    return whole && keywords[i].size() != word.size() ? std::string_view() : keywords[i];
  });
  return index >= 0 ? index : asked_match(word, keywords.size(), keyword);
}

void refuse_struct(const option_table& table) {
  internal_error(("settings of another command than " + std::string(table.command)).c_str(),
                 __FILE__, __LINE__);
}

bool read_sign_into(void* settings, const option_table& table) {
  const int c = skip_blanks_peek();
  for (const option_row& row : table.rows) {
    if (row.keyword.size() != 1 || row.keyword[0] != c) continue;
    next_nonblank();
    apply(row, settings, false);
    return true;
  }
  return false;
}

void read_option_into(void* settings, const option_table& table) {
  if (read_word() == 0) {
    if (table.errors.no_word) error_end(table.errors.no_word);
    read_item();
    error_end_f(table.errors.unknown, lexer.token);
  }
  const std::string word(token());
  bool negated = false;
  const option_row* row = find_option(word, table.rows, &negated);
  if (!row) error_end_f(table.errors.unknown, word.c_str());
  apply(*row, settings, negated);
}

option_outcome read_search_options_into(void* settings, const option_table& table) {
  read_bare_number(settings, table);
  const int sign = next_nonblank();
  if (sign == ';') return option_outcome::run;
  if (sign != '=' && sign != ':') error_end_f(table.errors.wrong_sign, sign);
  if (accept_char(';')) {
    no_timing();
    return option_outcome::list;
  }
  while (!accept_char(';'))
    if (!read_sign_into(settings, table)) read_option_into(settings, table);
  if (sign == '=') return option_outcome::run;
  no_timing();
  return option_outcome::set;
}

std::string option_help(const option_table& table, const option_row& row) {
  const void* defaults = table.defaults();
  return std::string(row.negatable ? "[no]" : "") + std::string(row.keyword) + argument_text(row) +
         " " + std::string(row.help_text) + default_text(row, defaults);
}

std::string changed_options_of(const void* settings, const option_table& table) {
  std::string text;
  for (const option_row& row : table.rows) {
    if (!is_changed(row, settings, table.defaults())) continue;
    if (!text.empty()) text += ' ';
    text += words_of(row, settings);
  }
  return text;
}

}  // namespace zeb
