#include "language/methods.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "base/files_read.h"
#include "base/message_text.h"
#include "base/random.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/options.h"

namespace zeb {
namespace {

constexpr std::size_t parts = 4;

struct methods_registry {
  std::array<std::vector<methods_lines>, parts> rooms;
  std::string command_line;
};
methods_registry methods;

std::vector<std::string> lines_of(methods_part part) {
  std::vector<std::string> all;
  for (const methods_lines lines : methods.rooms[static_cast<std::size_t>(part)]) {
    for (std::string& line : lines()) all.push_back(std::move(line));
  }
  return all;
}

std::string quoted_for_shell(const std::string& word) {
  const auto is_plain = [](unsigned char c) {
    return std::isalnum(c) ||
           std::string_view("_-.,/:=+@%").find(static_cast<char>(c)) != std::string_view::npos;
  };
  if (!word.empty() && std::all_of(word.begin(), word.end(), is_plain)) return word;
  std::string text = "'";
  for (const char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return text + "'";
}

std::vector<std::string> file_lines() {
  std::vector<std::string> lines;
  for (const file_read& file : files_read.files) {
    std::string line = file.name == "-" ? "standard input" : file.name;
    if (file.bytes >= 0) line += ", " + with_commas(std::to_string(file.bytes)) + " bytes";
    if (!file.digest.empty()) line += ", SHA-256 " + file.digest;
    if (file.versions > 1) line += text_of(", the last of %i versions", file.versions);
    lines.push_back(std::move(line));
  }
  return lines;
}

// In a quotation ".," stands for a semicolon.
void write_line(const std::string& line) {
  std::string text;
  for (const char c : line) text += c == ';' ? std::string(".,") : std::string(1, c);
  emit(text, "\n");
}

void write_part(const std::string& heading, const std::vector<std::string>& lines) {
  if (lines.empty()) return;
  write_line(heading);
  for (const std::string& line : lines) write_line("  " + line);
}

}  // namespace

void add_methods(methods_part part, methods_lines lines) {
  methods.rooms[static_cast<std::size_t>(part)].push_back(lines);
}

std::vector<std::string> changed_settings() {
  std::vector<std::string> lines = lines_of(methods_part::choices);
  for (const command_row& row : command_table()) {
    if (!row.options || !row.options->changed) continue;
    const std::string options = row.options->changed();
    if (options.empty()) continue;
    // Searches take options without running where ":" comes before them.
    const std::string_view sign = row.options->errors.wrong_sign ? ": " : " ";
    lines.push_back(std::string(row.name).append(sign).append(options));
  }
  if (randomness.seed_step) lines.push_back("rseed :" + std::to_string(randomness.seed_step));
  if (randomness.random_insertion) lines.push_back("rseed [");
  if (randomness.random_outgroup) lines.push_back("rseed >");
  if (randomness.quick_shuffle) lines.push_back("rseed !");
  if (time_limit.seconds) lines.push_back("timeout " + std::to_string(time_limit.seconds));
  return lines;
}

std::vector<std::string> session_settings() { return lines_of(methods_part::session); }

void keep_command_line(int argc, const char* const* argv) {
  methods.command_line.clear();
  for (int i = 0; i < argc; ++i) {
    if (i > 0) methods.command_line += ' ';
    methods.command_line += quoted_for_shell(argv[i]);
  }
}

void write_methods() {
  emit("quote METHODS\n");
  write_line("ZEB version " ZEB_VERSION ", run as " + methods.command_line);
  write_line("Random seed " + (randomness.random_seed == 0
                                   ? "0, which takes the clock"
                                   : std::to_string(randomness.random_seed)));
  write_part("Files read:", file_lines());
  write_part("Data:", lines_of(methods_part::data));
  write_part("Settings that differ from the defaults:", changed_settings());
  write_part("Searches:", lines_of(methods_part::searches));
  emit(";\n");
}

}  // namespace zeb
