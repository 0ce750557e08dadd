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

int script_file_get(script_file& file) {
  const int c = std::getc(file.stream);
  if (c == '\n') ++file.line;
  return c == EOF ? -1 : c;
}

int script_file_peek(script_file& file) {
  const int c = std::getc(file.stream);
  if (c == EOF) return -1;
  std::ungetc(c, file.stream);
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
  const long place = std::ftell(file.stream);
  const std::string before = text;
  take();
  take_sign();
  if (take_digits() || std::fseek(file.stream, place, SEEK_SET) != 0) return text;
  return before;
}

std::string script_file_string(script_file& file) {
  while (script_file_peek(file) >= 0 && script_file_peek(file) < 33) script_file_get(file);
  std::string text;
  while (script_file_peek(file) >= 33 && text.size() < longest)
    text += static_cast<char>(script_file_get(file));
  return text;
}

bool script_file_ended(script_file& file) {
  // What is looked at stays to be read: the place is put back.
  const long place = std::ftell(file.stream);
  int c = std::getc(file.stream);
  while (c != EOF && c < 33) c = std::getc(file.stream);
  const bool ended = c == EOF;
  std::clearerr(file.stream);
  std::fseek(file.stream, place, SEEK_SET);
  return ended;
}

void close_script_files() {
  for (script_file& file : script_files.files) std::fclose(file.stream);
  script_files.files.clear();
  script_files.active = -1;
}

}  // namespace zeb
