#include "macro/script_files.h"

#include "base/errors.h"

namespace zeb {

script_file_state script_files;

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

std::string script_file_string(script_file& file) {
  constexpr std::size_t longest = 8499;
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
