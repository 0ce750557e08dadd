#include "macro/script_files.h"

#include <cctype>

#include "base/errors.h"

namespace zeb {

script_file_state script_files;

namespace {
constexpr std::size_t longest = 8499;
}

script_file& active_script_file() {
  if (script_files.active < 0) error_end("No input file is active");
  return script_files.files[static_cast<std::size_t>(script_files.active)];
}

int script_file_peek(script_file& file, std::size_t ahead) {
  const int c = file.file.peek(ahead);
  if (c < 0 && !file.file.fault().empty()) error_end("Can't read", file.name + file.file.cause());
  return c;
}

int script_file_get(script_file& file) {
  const int c = script_file_peek(file);
  if (c >= 0) file.file.get();
  if (c == '\n') ++file.line;
  return c;
}

std::string script_file_number(script_file& file) {
  while (script_file_peek(file) >= 0 && script_file_peek(file) < 33) script_file_get(file);
  std::string text;
  const auto take = [&] { text += static_cast<char>(script_file_get(file)); };
  const auto take_digits = [&] {
    const std::size_t before = text.size();
    while (std::isdigit(script_file_peek(file)) && text.size() < longest) take();
    return text.size() > before;
  };
  const auto take_sign = [&] {
    if (script_file_peek(file) == '-' || script_file_peek(file) == '+') take();
  };
  take_sign();
  const int first = std::tolower(script_file_peek(file));
  if (first == 'i' || first == 'n') {  // "inf", "nan"
    for (int i = 0; i < 3 && std::isalpha(script_file_peek(file)); ++i) take();
    return text;
  }
  bool digits = take_digits();
  if (script_file_peek(file) == '.') {
    take();
    digits = take_digits() || digits;
  }
  if (!digits || std::tolower(script_file_peek(file)) != 'e') return text;
  // An "e" without digits after it isn't of the number.
  const int sign = script_file_peek(file, 1);
  const std::size_t digit_place = sign == '-' || sign == '+' ? 2 : 1;
  if (!std::isdigit(script_file_peek(file, digit_place))) return text;
  take();
  take_sign();
  take_digits();
  return text;
}

std::string script_file_string(script_file& file) {
  while (script_file_peek(file) >= 0 && script_file_peek(file) < 33) script_file_get(file);
  std::string text;
  while (script_file_peek(file) >= 33 && text.size() < longest)
    text += static_cast<char>(script_file_get(file));
  return text;
}

bool script_file_ended(script_file& file) {
  // What is looked at stays to be read.
  std::size_t place = 0;
  int c = script_file_peek(file);
  while (c >= 0 && c < 33) c = script_file_peek(file, ++place);
  return c < 0;
}

void close_script_files() {
  script_files.files.clear();
  script_files.active = -1;
}

}  // namespace zeb
