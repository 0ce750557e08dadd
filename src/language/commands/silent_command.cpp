#include <span>
#include <string>
#include <vector>

#include "base/errors.h"
#include "console/output.h"
#include "language/commands/commands.h"
#include "language/interpreter.h"
#include "language/lexer.h"

namespace zeb {
namespace {

struct output_word {
  std::string_view word;
  unsigned places;
};
constexpr output_word words[] = {
    {"all", no_log | no_console | no_text_buffer},
    {"file", no_log},
    {"console", no_console},
    {"buffer", no_text_buffer},
};

void show_places() {
  std::vector<std::string_view> places;
  for (const output_word& entry : std::span(words).subspan(1)) {
    if (!(output.output_mask & entry.places)) places.push_back(entry.word);
  }
  if (places.empty()) return emit("No output \n");
  std::string text;
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (i > 0) text += i + 1 == places.size() ? " and " : ", ";
    text += places[i];
  }
  emit("Output written to ", text, "\n");
}

unsigned read_place() {
  if (read_word() == 0) {
    read_item();
    error_end("Wrong argument for silent:", token());
  }
  for (const output_word& entry : words) {
    if (is_prefix(token(), entry.word)) return entry.places;
  }
  error_end("Wrong argument for silent:", token());
}

}  // namespace

void silent_command() {
  no_timing();
  const int sign = next_nonblank();
  if (sign == ';') return show_places();
  if (sign != '=' && sign != '-') error_end("Wrong argument for silent:", static_cast<char>(sign));
  if (accept_char(';')) return show_places();
  unsigned places = 0;
  while (!accept_char(';')) places |= read_place();
  if (sign == '=') {
    output.output_mask |= places;
  } else {
    output.output_mask &= ~places;
  }
}

}  // namespace zeb
