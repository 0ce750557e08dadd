#include "matrix/reading/block_format.h"

#include <array>

#include "base/errors.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/name_matching.h"

namespace zeb {
namespace {

using option_action = void (*)(block_format& format, bool other_types_read);

void set_type(block_format& format, data_type type) {
  check_type_fits(type);
  format.type = type;
}

// "landmark 2d"; the letter may be missing.
void read_landmark_option(block_format& format, bool) {
  int dimension = 0;
  if (!read_optional_int(&dimension) || (dimension != 2 && dimension != 3)) {
    error_end("Landmark data must be 2D or 3D");
  }
  if (!accept_char('d')) accept_char('D');
  format.type = landmark_data;
}

void check_landmarks(const block_format& format) {
  if (format.type != landmark_data) return;
  if (!format.name.empty()) {
    error_end("Sorry, if data matrix contains landmarks, blocks cannot be named data matrix");
  }
  error_end("Landmark data are not available in this version");
}

void read_match_option(block_format& format, bool) {
  double threshold = 0;
  if (read_optional_float(&threshold)) matching.match_threshold = threshold;
  format.match_names = true;
}

struct option_row {
  std::string_view keyword;
  option_action apply;
};
// A word takes the first row that it is a prefix of.
constexpr std::array options = {
    option_row{"dna", [](block_format& f, bool) { set_type(f, dna_data); }},
    option_row{"landmark", read_landmark_option},
    option_row{"continuous",
               [](block_format& f, bool other_types_read) {
                 check_type_fits(continuous_data);
                 if (other_types_read) {
                   error_end("Continuous characters must precede all other ones!");
                 }
                 f.type = continuous_data;
               }},
    option_row{"proteins", [](block_format& f, bool) { set_type(f, protein_data); }},
    option_row{"numeric", [](block_format& f, bool) { set_type(f, numeric_data); }},
    option_row{"verbose", [](block_format& f, bool) { f.verbose = true; }},
    option_row{"gaps", [](block_format& f, bool) { f.gaps = true; }},
    option_row{"nogaps", [](block_format& f, bool) { f.gaps = false; }},
    option_row{"trimtail", [](block_format& f, bool) { f.trim_tail = true; }},
    option_row{"trimhead", [](block_format& f, bool) { f.trim_head = true; }},
    option_row{"match", read_match_option},
};

const option_row* find_block_option(const std::string& word) {
  for (const option_row& row : options) {
    if (is_prefix(word, row.keyword)) return &row;
  }
  if (matching.match_mode == 1) {
    for (const option_row& row : options) {
      if (ask_match(word, row.keyword, "option")) return &row;
    }
  }
  return nullptr;
}

std::string read_block_name() {
  std::string name;
  int c = skip_blanks_peek();
  while (c > 32 && c != ']' && c != ';') {
    name += static_cast<char>(read_char());
    c = read_char();
    unread_char();
  }
  if (name.empty()) error_end("Expected block name after slash");
  return name;
}

}  // namespace

void check_type_fits(data_type type) {
  if (matrix.cell_bytes == 4) return;
  if (type == continuous_data) {
    error_end("To read data as continuous, must set nstates to 32 before reading matrix");
  }
  if (type == protein_data) {
    error_end("To read data as protein, must set nstates to 32 before reading matrix");
  }
}

void read_block_format(block_format& format, bool other_types_read) {
  for (;;) {
    if (accept_char(']')) return check_landmarks(format);
    if (accept_char('/')) {
      format.name = read_block_name();
      continue;
    }
    if (read_word() == 0) {
      error_end("Expected format (dna, prot, contin, num) or closing bracket");
    }
    const std::string word(token());
    const option_row* row = find_block_option(word);
    if (!row) error_end("Unrecognized string in format command:", word);
    row->apply(format, other_types_read);
  }
}

}  // namespace zeb
