#include "language/fit_text.h"

#include <cctype>
#include <cstdint>

#include "base/errors.h"
#include "base/text_columns.h"

namespace zeb {

namespace {

constexpr std::string_view signs_of_commands = ";'\"$#%";
constexpr std::string_view signs_of_lists = "+-/";

// C0, C1 (as bytes of their own, too), and what parts or turns lines.
bool is_control(std::string_view character) {
  std::int32_t code = 0;
  character_bytes(character, 0, &code);
  return code < 32 || (code >= 127 && code < 160) || (code >= 0x2028 && code <= 0x202e) ||
         (code >= 0x2066 && code <= 0x2069);
}

// Calls `put` with each character of the text and the bytes before and after it (0 at the ends).
template <class function>
void for_each_character(std::string_view text, function put) {
  char before = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::string_view character = text.substr(i, character_bytes(text, i));
    i += character.size();
    put(character, before, i < text.size() ? text[i] : '\0');
    before = character.back();
  }
}

// Would the macro language take the sign for the start of an expansion?
bool opens_expansion(char sign, char next) {
  const bool word = std::isalnum(static_cast<unsigned char>(next)) || next == '(';
  return sign == '#' || ((sign == '$' || sign == '%') && word) ||
         ((sign == '\'' || sign == '"') && (word || next == '/'));
}

bool is_unfit(named what, std::string_view character, char before) {
  const char c = character[0];
  return is_control(character) || c == ' ' || signs_of_commands.find(c) != std::string_view::npos ||
         (what == named::taxon && signs_of_lists.find(c) != std::string_view::npos) ||
         (c == '&' && before == 0) || (c == ',' && before == '.');
}

}  // namespace

std::string fit_name(std::string_view name, named what) {
  std::string result;
  for_each_character(normal_form(name), [&](std::string_view character, char before, char) {
    if (is_unfit(what, character, before)) {
      result += '_';
    } else {
      result += character;
    }
  });
  return result;
}

std::string fit_text(std::string_view text) {
  std::string result;
  for_each_character(text, [&result](std::string_view character, char before, char after) {
    const char c = character[0];
    if (is_control(character)) {
      result += ' ';
    } else if (opens_expansion(c, after)) {
      result += c == '\'' || c == '"' ? '`' : '_';
    } else if (c == ';' || c == ',') {
      result += before == '.' ? ' ' : ',';
    } else {
      result += character;
    }
  });
  return result;
}

std::string without_controls(std::string_view text) {
  std::string result;
  for_each_character(text, [&result](std::string_view character, char /*before*/, char /*after*/) {
    result += is_control(character) && character[0] != '\n' ? " " : character;
  });
  return result;
}

void name_fitter::tell(std::string_view name) {
  const char* const kind = what_ == named::taxon ? "taxon" : "character";
  for_each_character(name, [this, kind](std::string_view character, char before, char) {
    const char c = character[0];
    if (c == ' ' || !is_unfit(what_, character, before)) return;
    if (is_control(character)) {
      if (!told_controls_) {
        warning("Tabs and the like in", kind, "names will be changed to '_' (=underscore).");
      }
      told_controls_ = true;
    } else if (told_signs_.find(c) == std::string::npos) {
      told_signs_ += c;
      warning_f("Symbol '%c' in %s names will be changed to '_' (=underscore).", c, kind);
    }
  });
}

std::string name_fitter::fit(std::string_view name) {
  tell(name);
  return fit_name(name, what_);
}

std::string name_fitter::fit(std::string_view name, std::size_t longest,
                             std::string_view warning_of_length) {
  const std::string whole = normal_form(name);
  if (whole.size() > longest && !told_length_) {
    told_length_ = true;
    warning(warning_of_length);
  }
  return fit(text_in_bytes(whole, longest));
}

}  // namespace zeb
