// The reader of search options: the template part of shell/search_options.h.
#pragma once

#include <vector>

#include "language/options.h"

namespace zeb {

/// Raises the error of an option whose number is missing or out of range.
[[noreturn]] void refuse_option_number(bool too_large, long long value, std::string_view missing,
                                       const char* too_large_format);
/// Reads an integer option: out of the range, or missing, is the error.
int read_option_number(option_range range, std::string_view missing, const char* too_large_format);
/// Reads an option word into `token`; an unknown one is the error. Returns the index.
int read_option_word(std::span<const std::string_view> keywords, const char* unknown_format,
                     bool* negated);
[[noreturn]] void unknown_option(const char* unknown_format);

template <class settings>
void apply_search_option(settings& target, const search_option<settings>& option, bool negated,
                         const char* unknown_format) {
  using argument = typename search_option<settings>::argument;
  if (negated && !option.has_negative) unknown_option(unknown_format);
  int value = negated ? 0 : 1;
  switch (option.kind) {
    case argument::none:
      if (option.flag) target.*option.flag = negated ? !option.flag_value : option.flag_value;
      break;
    case argument::number:
      if (negated) unknown_option(unknown_format);
      value = read_option_number(option.range, option.missing, option.too_large);
      target.*option.integer = value;
      break;
    case argument::optional_number:
      value = option.default_number;
      if (!negated && read_optional_int(&value) &&
          (value < option.range.lowest || value > option.range.highest)) {
        refuse_option_number(value > option.range.highest, value, option.missing, option.too_large);
      }
      if (option.integer) target.*option.integer = value;
      break;
    case argument::real:
      if (negated) unknown_option(unknown_format);
      {
        double number = 0;
        if (!read_optional_float(&number) || number < option.range.lowest) {
          refuse_option_number(false, 0, option.missing, option.too_large);
        }
        if (number > option.range.highest) {
          refuse_option_number(true, static_cast<long long>(number), option.missing,
                               option.too_large);
        }
        target.*option.real = number;
      }
      break;
    case argument::action:
      break;
  }
  if (option.apply) option.apply(target, value);
}

// The options go into a copy, so that an error leaves the settings as they were.
template <class settings>
option_outcome read_search_options(settings& target,
                                   std::span<const search_option<settings>> options,
                                   const char* unknown_format, const char* wrong_argument_format,
                                   const search_option<settings>* bare_number) {
  settings copy = target;
  int bare = 0;
  if (bare_number && read_optional_int(&bare)) {
    if (bare < bare_number->range.lowest || bare > bare_number->range.highest) {
      refuse_option_number(bare > bare_number->range.highest, bare, bare_number->missing,
                           bare_number->too_large);
    }
    copy.*bare_number->integer = bare;
    if (bare_number->apply) bare_number->apply(copy, bare);
  }
  const int mark = next_nonblank();
  if (mark == ';') {
    target = copy;
    return option_outcome::run;
  }
  if (mark != '=' && mark != ':') error_end_f(wrong_argument_format, mark);
  if (accept_char(';')) {
    target = copy;
    no_timing();
    return option_outcome::list;
  }
  std::vector<std::string_view> keywords;
  for (const auto& option : options) keywords.push_back(option.keyword);
  while (!accept_char(';')) {
    bool negated = false;
    const int index = read_option_word(keywords, unknown_format, &negated);
    apply_search_option(copy, options[static_cast<std::size_t>(index)], negated, unknown_format);
  }
  target = copy;
  if (mark == '=') return option_outcome::run;
  no_timing();
  return option_outcome::set;
}

}  // namespace zeb
