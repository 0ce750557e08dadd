#include <span>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/commands/commands.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"

namespace zeb {
namespace {

/// The places that a run of the command names.
struct output_places {
  bool file = false;
  bool console = false;
  bool buffer = false;

  unsigned mask() const {
    return (file ? no_log : 0U) | (console ? no_console : 0U) | (buffer ? no_text_buffer : 0U);
  }
};

constexpr command_options rows = {
    choice<&output_places::file>("all", 1)
        .also<&output_places::console>(1)
        .also<&output_places::buffer>(1)
        .help("all places"),
    choice<&output_places::file>("file", 1).help("the log"),
    choice<&output_places::console>("console", 1).help("the console"),
    choice<&output_places::buffer>("buffer", 1).help("the text buffer"),
};

void show_places() {
  std::vector<std::string_view> places;
  for (const option_row& row : std::span(rows.rows).subspan(1)) {
    output_places named;
    row.member.set(&named, 1);
    if (!(output.output_mask & named.mask())) places.push_back(row.keyword);
  }
  if (places.empty()) return emit("No output \n");
  emit("Output written to ", joined_list(places), "\n");
}

}  // namespace

constexpr option_table silent_options =
    rows.table("silent", {.unknown = "Wrong argument for silent: %s"});

void silent_command() {
  no_timing();
  const int sign = next_nonblank();
  if (sign == ';') return show_places();
  if (sign != '=' && sign != '-') error_end("Wrong argument for silent:", static_cast<char>(sign));
  if (accept_char(';')) return show_places();
  output_places places;
  while (!accept_char(';')) read_option(places, silent_options);
  if (sign == '=') {
    close_places(places.mask());
  } else {
    open_places(places.mask());
  }
}

}  // namespace zeb
